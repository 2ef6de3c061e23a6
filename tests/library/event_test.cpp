// What the C interface says of a record is what the rooms under it say.

#include "events/event.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

#include "events/log_text.h"
#include "library.h"
#include "record_maker.h"

extern "C" const char* version_from_c();

namespace sonaprobe::library {
namespace {

using differential::textOf;

constexpr double kTicks = 24.0;

std::string textOfEvent(const Event& event) {
    char text[kLogTextRoom];
    if (event.text == nullptr) return {};
    return {text, putLogText(text, event, kTicks)};
}

void expectSameValues(const sonaprobe_event* found, const Event& event) {
    size_t count = 0;
    for (const Piece& piece : piecesOf(event)) {
        if (piece.reading == Reading::nothing) continue;
        const Value expected = valueOf(event, piece);
        const sonaprobe_value* const value = sonaprobe_event_value(found, count++);
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(sonaprobe_value_name(value), expected.name);
        EXPECT_EQ(sonaprobe_value_reading(value), static_cast<int>(expected.reading));
        EXPECT_EQ(sonaprobe_value_bits(value), expected.bits);
        EXPECT_EQ(sonaprobe_value_word(value), expected.word);
        EXPECT_EQ(sonaprobe_value_is_signed(value), expected.reading == Reading::signedDecimal);
        EXPECT_EQ(sonaprobe_value_is_result(value), piece.isResult);
        char text[kLogTextRoom];
        const std::string expectedText(text, putValue(text, event, piece, kTicks));
        size_t length = 0;
        const char* const begin = sonaprobe_value_text(value, &length);
        EXPECT_EQ(std::string(begin, length), expectedText);
        EXPECT_EQ(begin[length], '\0');
        EXPECT_EQ(sonaprobe_event_value_named(found, std::string(expected.name).c_str()), value);
    }
    EXPECT_EQ(sonaprobe_event_value_count(found), count);
    EXPECT_EQ(sonaprobe_event_value(found, count), nullptr);
    EXPECT_EQ(sonaprobe_event_value_named(found, "no such name"), nullptr);
}

void expectSameMeaning(const sonaprobe_event* found, const TraceRecord& record) {
    const Event event = decode(record);
    EXPECT_EQ(sonaprobe_event_outcome(found), static_cast<int>(event.outcome));
    EXPECT_EQ(sonaprobe_event_group(found), groupOf(event));
    EXPECT_EQ(sonaprobe_event_method(found), methodOf(event));
    EXPECT_EQ(sonaprobe_event_is_failure(found), isFailure(event));
    size_t length = 0;
    const char* const text = sonaprobe_event_text(found, &length);
    EXPECT_EQ(std::string(text, length), textOfEvent(event));
    EXPECT_EQ(text[length], '\0');
    const bool hasObject = event.event != nullptr && event.decoder->hasObject;
    EXPECT_EQ(sonaprobe_event_has_object(found), hasObject);
    EXPECT_EQ(sonaprobe_event_object(found), hasObject ? record.arg1 : 0);
    expectSameValues(found, event);
}

void expectSameRecord(const sonaprobe_event* found, const TraceRecord& record) {
    EXPECT_EQ(sonaprobe_event_time(found), record.timestamp);
    EXPECT_EQ(sonaprobe_event_code(found), codeOf(record.debugid));
    EXPECT_EQ(sonaprobe_event_qualifier(found), static_cast<int>(qualifierOf(record.debugid)));
    EXPECT_EQ(sonaprobe_event_thread(found), record.arg5);
    EXPECT_EQ(sonaprobe_event_cpu(found), record.cpuid);
    EXPECT_EQ(sonaprobe_event_argument(found, 0), 0U);
    EXPECT_EQ(sonaprobe_event_argument(found, 1), record.arg1);
    EXPECT_EQ(sonaprobe_event_argument(found, 2), record.arg2);
    EXPECT_EQ(sonaprobe_event_argument(found, 3), record.arg3);
    EXPECT_EQ(sonaprobe_event_argument(found, 4), record.arg4);
    EXPECT_EQ(sonaprobe_event_argument(found, 5), record.arg5);
    EXPECT_EQ(sonaprobe_event_argument(found, 6), 0U);
}

TEST(Event, IsWhatTheRoomsUnderItSay) {
    differential::Random random(differential::seedOfRun());
    differential::RecordMaker maker(random);
    std::vector<TraceRecord> records;
    records.reserve(100'000);
    for (int i = 0; i < 100'000; ++i) records.push_back(maker.make());

    const Reader reader = readerOf(std::as_bytes(std::span(records)));
    sonaprobe_set_ticks_per_microsecond(reader.get(), kTicks);
    const sonaprobe_event* event = nullptr;
    for (const TraceRecord& record : records) {
        if (record.debugid == kDivisorMarker || record.debugid == kInvalidMarker) continue;
        ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
        expectSameRecord(event, record);
        expectSameMeaning(event, record);
        if (HasFailure()) FAIL() << textOf(record);
    }
    EXPECT_EQ(sonaprobe_next(reader.get(), &event), 0);
}

// Formats escape nothing of a text that holds nothing.
TEST(Event, HoldsWhatItsTextShows) {
    const auto shownBy = [](std::string_view text) {
        unsigned shown = 0;
        if (text.find(',') != std::string_view::npos) shown |= kHoldsComma;
        if (text.find_first_of("\"\\<") != std::string_view::npos) shown |= kHoldsMarks;
        const auto isPrintable = [](char character) {
            return character >= ' ' && character <= '~';
        };
        if (!std::ranges::all_of(text, isPrintable)) shown |= kHoldsAnyByte;
        return shown;
    };
    differential::Random random(differential::seedOfRun());
    differential::RecordMaker maker(random);
    std::array<size_t, 8> texts{};  // by what they hold
    for (int i = 0; i < 100'000; ++i) {
        const TraceRecord record = maker.make();
        const Event event = decode(record);
        if (event.text == nullptr) continue;
        unsigned shown = shownBy(textOfEvent(event));
        for (const Piece& piece : piecesOf(event)) shown |= shownBy(valueOf(event, piece).name);
        const unsigned holds = event.text->holds;
        ++texts[holds];
        // Any byte may be a comma or a mark.
        const unsigned told = (holds & kHoldsAnyByte) != 0 ? ~0U : holds;
        ASSERT_EQ(shown & ~told, 0U) << textOfEvent(event);
    }
    EXPECT_GT(texts[0], 50'000U);
    EXPECT_GT(texts[kHoldsComma], 0U);
    EXPECT_GT(texts[kHoldsAnyByte], 0U);
}

// Names are handed out in rooms of their own, which each must fit.
TEST(Event, NamesOfAllTextsAreHandedOutWhole) {
    std::vector<const Decoder*> decoders(kClassTable.begin(), kClassTable.end());
    decoders.push_back(&decoders::kAudioServer);
    size_t longest = 0;
    for (const Decoder* decoder : decoders) {
        if (decoder == nullptr) continue;
        for (const Row& row : decoder->rows) {
            longest = std::max<size_t>(longest, row.name.length);
            for (const Piece& piece : decoder->piecesOf(row)) {
                longest = std::max(longest, decoder->nameOf(piece).size());
            }
        }
    }
    EXPECT_GT(longest, 20U);
    EXPECT_LT(longest, 128U);
}

TEST(Event, VersionIsTheProgramsInCToo) { EXPECT_STREQ(version_from_c(), "100.45"); }

}  // namespace
}  // namespace sonaprobe::library
