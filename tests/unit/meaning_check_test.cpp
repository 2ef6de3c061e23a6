// The sentences of the reference: what does not fit the decoder tables is named.

#include "events/meaning_check.h"

#include <array>
#include <gtest/gtest.h>

namespace sonaprobe::events {
namespace {

using meanings::Field;
using meanings::FieldGroup;
using meanings::Meaning;

const Told kTold = {{0x05245028, 0x05245040}, {"offset"}};

constexpr std::array kBoth = {Meaning{0x05245028, "Reads."}, Meaning{0x05245040, "Is called."}};
constexpr std::array kWithoutStop = {Meaning{0x05245028, "Reads"}, kBoth[1]};
constexpr std::array kOneMore = {kBoth[0], Meaning{0x0524502C, "Writes."}, kBoth[1]};
constexpr std::array kTurned = {kBoth[1], kBoth[0]};
constexpr std::array kTwice = {kBoth[0], kBoth[1], kBoth[1]};

std::string faultWith(std::span<const Meaning> sentences, std::string_view field = "offset") {
    const std::array tables = {sentences};
    const std::array fields = {Field{field, "The address of a register.", "3.3"}};
    const std::array groups = {FieldGroup{"Registers", "A standard", fields}};
    return faultOf(kTold, tables, groups);
}

TEST(MeaningCheck, SentencesOfAllEventsAreFine) { EXPECT_EQ(faultWith(kBoth), ""); }

TEST(MeaningCheck, EachFaultIsNamed) {
    const std::string none = ": the event has no sentence";
    const std::string unknown = ": no event has this code, or its sentence is out of order";
    EXPECT_EQ(faultWith(std::span(kBoth).first(1)), "0x05245040" + none);
    EXPECT_EQ(faultWith(std::span(kBoth).last(1)), "0x05245028" + none);
    EXPECT_EQ(faultWith(kOneMore), "0x0524502C" + unknown);
    EXPECT_EQ(faultWith(kTurned), "0x05245028" + none);
    EXPECT_EQ(faultWith(kTwice), "0x05245040" + unknown);
    EXPECT_EQ(faultWith(kWithoutStop), "0x05245028: the sentence has no full stop");
    EXPECT_EQ(faultWith(kBoth, "ofset"), "ofset: no text has a value of this name");
}

}  // namespace
}  // namespace sonaprobe::events
