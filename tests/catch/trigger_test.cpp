// Which record is the event that a watch waits for.

#include "scope/catch/trigger.h"

#include <gtest/gtest.h>

#include "scope/catch/watch.h"
#include "scope/failure.h"

namespace sonaprobe::scope {
namespace {

constexpr uint32_t kEnable =
    0x05245C0C;  // OrvelHDAPath::enable; result: 0x%08x in arg4's lower half
constexpr uint32_t kStart = 1;
constexpr uint32_t kEnd = 2;
constexpr uint32_t kOverloadStart = 0x21040001;
constexpr uint64_t kTicks = 24;  // a microsecond

TraceRecord record(uint32_t debugid, uint64_t microseconds = 0, uint64_t arg4 = 0,
                   uint64_t thread = 0xA5) {
    TraceRecord made{};
    made.timestamp = 1'000'000 + microseconds * kTicks;
    made.debugid = debugid;
    made.arg1 = 0xA1;
    made.arg4 = arg4;
    made.arg5 = thread;
    return made;
}

// What the last of the records meets, the others having met nothing; empty for nothing.
std::string met(const std::vector<std::string>& conditions,
                const std::vector<TraceRecord>& records) {
    Trigger trigger(conditions);
    trigger.beginAnew(kTicks);
    std::string last;
    for (const TraceRecord& each : records) {
        EXPECT_EQ(last, "") << "met too early";
        last = trigger.take(each).value_or("");
    }
    return last;
}

std::string refusalOf(const std::string& condition) {
    try {
        const Trigger trigger({condition});
    } catch (const Failure& failure) {
        return failure.message;
    }
    return "accepted";
}

TEST(Trigger, KnowsADropout) {
    EXPECT_EQ(met({"dropout"}, {record(kEnable | kStart), record(kOverloadStart)}), "dropout");
    EXPECT_EQ(met({"dropout"}, {record(0x21040005)}), "");
}

TEST(Trigger, KnowsAFailure) {
    EXPECT_EQ(met({"failure"}, {record(kEnable | kStart), record(kEnable | kEnd, 5, 0),
                                record(kEnable | kEnd, 9, 0xE00002BC)}),
              "failure");
}

TEST(Trigger, KnowsAnEventByNameMethodOrCode) {
    for (const char* const name : {"OrvelHDAPath::enable", "enable", "0x05245C0C"}) {
        EXPECT_EQ(met({name}, {record(0x05245C1D), record(kEnable | kStart)}), name);
    }
}

TEST(Trigger, KnowsAConditionOnValues) {
    const std::string condition = "result == 0xe00002bc && channelID == 0";
    EXPECT_EQ(
        met({condition}, {record(kEnable | kEnd, 0, 1), record(kEnable | kEnd, 0, 0xE00002BC)}),
        condition);
}

TEST(Trigger, KnowsACallThatTookLongWhereItEnds) {
    const auto call = [](uint64_t microseconds) {
        return std::vector{record(kEnable | kStart), record(0x05245C1C, 1, 0, 0xB6),
                           record(kEnable | kEnd, microseconds)};
    };
    EXPECT_EQ(met({"longer 5ms"}, call(5000)), "longer 5ms");
    EXPECT_EQ(met({"longer 5ms"}, call(4999)), "");
    EXPECT_EQ(met({"longer 5ms", "longer 1ms"}, call(2000)), "longer 1ms");
}

TEST(Trigger, TimesNoCallAcrossALoss) {
    Trigger trigger({"longer 5ms"});
    trigger.beginAnew(kTicks);
    EXPECT_FALSE(trigger.take(record(kEnable | kStart)));
    trigger.beginAnew(kTicks);
    EXPECT_FALSE(trigger.take(record(kEnable | kEnd, 9000)));
}

// Starts without ends, on ever new threads, and a call among them.
TEST(Trigger, ForgetsCallsThatNeverEnd) {
    Trigger trigger({"longer 5ms"});
    trigger.beginAnew(kTicks);
    for (uint64_t i = 0; i < 300'000; ++i) {
        ASSERT_FALSE(trigger.take(record(kEnable | kStart, i / 100, 0, i)));
    }
    EXPECT_FALSE(trigger.take(record(kEnable | kStart, 4000, 0, 1'000'000)));
    EXPECT_TRUE(trigger.take(record(kEnable | kEnd, 9000, 0, 1'000'000)));
    EXPECT_FALSE(trigger.take(record(kEnable | kEnd, 9001, 0, 0))) << "it is remembered";
}

TEST(Trigger, OfSeveralConditionsAnyIsEnough) {
    const std::vector<std::string> conditions{"dropout", "failure", "enable"};
    EXPECT_EQ(met(conditions, {record(kOverloadStart)}), "dropout");
    EXPECT_EQ(met(conditions, {record(kEnable | kStart)}), "enable");
}

TEST(Trigger, SaysWhatAConditionCouldHaveBeen) {
    EXPECT_EQ(refusalOf("longer soon"), "--on: 'longer soon' has no time, such as in 'longer 5ms'");
    EXPECT_NE(refusalOf("OrvelHDAPath::enabel").find("'OrvelHDAPath::enable'"), std::string::npos);
    EXPECT_NE(refusalOf("resultt == 1").find("no value is called 'resultt'"), std::string::npos);
    EXPECT_NE(refusalOf("").find("--on: name dropout"), std::string::npos);
}

TEST(NumberedPath, StandsBeforeTheEndingOfTheName) {
    EXPECT_EQ(numberedPath("trace.raw", 1, 1), "trace.raw");
    EXPECT_EQ(numberedPath("trace.raw", 2, 3), "trace-2.raw");
    EXPECT_EQ(numberedPath("some.folder/trace", 2, 3), "some.folder/trace-2");
    EXPECT_EQ(numberedPath("folder/.trace", 2, 3), "folder/.trace-2");
}

}  // namespace
}  // namespace sonaprobe::scope
