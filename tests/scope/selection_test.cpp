// Which records a selection contains.

#include "analysis/selection.h"

#include <gtest/gtest.h>

namespace sonaprobe {
namespace {

constexpr uint32_t kEnableStart = 0x05245C0D;  // OrvelHDAPath::enable
constexpr uint32_t kEnableEnd = 0x05245C0E;    // result: 0x%08x in arg4's lower half

TraceRecord record(uint32_t debugid) {
    TraceRecord made{};
    made.debugid = debugid;
    made.arg1 = 0xA1;
    made.arg5 = 0xA5;
    made.cpuid = 2;
    return made;
}

Selection selected(Criteria criteria) {
    auto made = Selection::make(std::move(criteria));
    if (const auto* const refusal = std::get_if<Refusal>(&made)) {
        ADD_FAILURE() << refusal->option << ": " << refusal->message;
        return {};
    }
    return std::move(std::get<Selection>(made));
}

bool contains(Criteria criteria, const TraceRecord& record, Nanoseconds time = 0) {
    return selected(std::move(criteria)).contains(record, 0, time);
}

std::string refusalOf(Criteria criteria) {
    const auto made = Selection::make(std::move(criteria));
    const auto* const refusal = std::get_if<Refusal>(&made);
    return refusal != nullptr ? refusal->message : "accepted";
}

TEST(Selection, WithoutCriteriaIsAll) {
    EXPECT_TRUE(selected({}).isAll());
    EXPECT_TRUE(contains({}, record(0)));
}

TEST(Selection, IncludesFromAndNotTo) {
    const Criteria window{.from = 10, .to = 20};
    EXPECT_FALSE(contains(window, record(0), 9));
    EXPECT_TRUE(contains(window, record(0), 10));
    EXPECT_TRUE(contains(window, record(0), 19));
    EXPECT_FALSE(contains(window, record(0), 20));
}

TEST(Selection, TakesADriverByAnyOfItsNames) {
    for (const char* const name :
         {"OrvelHDAPath", "orvelhdapath", "hdap", "kAudioTOrvelHDAPath", "23"}) {
        EXPECT_TRUE(contains({.drivers = {name}}, record(kEnableStart))) << name;
        EXPECT_FALSE(contains({.drivers = {name}}, record(0x05240C0D))) << name;
    }
    EXPECT_TRUE(contains({.drivers = {"hdad", "hdap"}}, record(kEnableStart)));
    // The class of the audio server's code is none of an audio driver's.
    EXPECT_FALSE(contains({.drivers = {"hhda"}}, record(0x21040005)));
}

TEST(Selection, TakesAMethodByNameOrCode) {
    for (const char* const name :
         {"enable", "OrvelHDAPath::enable", "Enable", "0x05245C0C", "0x05245c0e"}) {
        EXPECT_TRUE(contains({.methods = {name}}, record(kEnableStart))) << name;
        EXPECT_FALSE(contains({.methods = {name}}, record(0x05245C1D))) << name;
    }
    EXPECT_TRUE(contains({.methods = {"0x01400004"}}, record(0x01400005)));
}

TEST(Selection, ComparesThreadProcessorAndObject) {
    EXPECT_TRUE(contains({.threads = {1, 0xA5}}, record(kEnableStart)));
    EXPECT_FALSE(contains({.threads = {1}}, record(kEnableStart)));
    EXPECT_TRUE(contains({.cpus = {2}}, record(kEnableStart)));
    EXPECT_FALSE(contains({.cpus = {3}}, record(kEnableStart)));
    EXPECT_TRUE(contains({.objects = {0xA1}}, record(kEnableStart)));
    EXPECT_FALSE(contains({.objects = {0xA2}}, record(kEnableStart)));
    // arg1 of the audio server's records is no object.
    EXPECT_FALSE(contains({.objects = {0xA1}}, record(0x21040005)));
}

TEST(Selection, FindsFailures) {
    TraceRecord end = record(kEnableEnd);
    EXPECT_FALSE(contains({.failed = true}, end));
    end.arg4 = 0xE00002BC;
    EXPECT_TRUE(contains({.failed = true}, end));
}

TEST(Selection, ComparesValuesByNameAndByItsLastWords) {
    TraceRecord end = record(kEnableEnd);
    end.arg4 = 0xFFFFFFFF;
    for (const char* const where : {"result == 0xFFFFFFFF", "result == -1", "result != 0",
                                    "result > 5", "channelID == 0 && result >= 4294967295"}) {
        EXPECT_TRUE(contains({.where = where}, end)) << where;
    }
    for (const char* const where :
         {"result == 0", "result != -1", "result < 5", "result == 0x1FFFFFFFF"}) {
        EXPECT_FALSE(contains({.where = where}, end)) << where;
    }
    // Its start has no result.
    EXPECT_FALSE(contains({.where = "result != 0"}, record(kEnableStart)));
    EXPECT_FALSE(contains({.where = "!(result != 0)"}, record(kEnableStart)));

    // "currentPowerState: %lld device: %p" of PlexoDevice::setPowerState.
    TraceRecord state = record(0x05240C1A);
    state.arg2 = ~uint64_t{0};
    EXPECT_TRUE(contains({.where = "currentPowerState < 0"}, state));
    EXPECT_TRUE(contains({.where = "currentPowerState == -1"}, state));
}

TEST(Selection, ComparesWordsAsTexts) {
    TraceRecord wait = record(0x05240C29);  // "Begin: asyncPowerStateChangeInProgress: %s"
    wait.arg2 = 1;
    EXPECT_TRUE(contains({.where = "asyncPowerStateChangeInProgress == true"}, wait));
    EXPECT_FALSE(contains({.where = "asyncPowerStateChangeInProgress == 'false'"}, wait));
    EXPECT_TRUE(contains({.where = "asyncPowerStateChangeInProgress != false"}, wait));
    EXPECT_TRUE(contains({.where = "asyncPowerStateChangeInProgress == 1"}, wait));
}

TEST(Selection, TakesWhatIsNearADropout) {
    Selection near = selected({.aroundDropouts = 10});
    EXPECT_TRUE(near.needsSurvey());
    near.setDropouts({100, 105, 200});
    for (const Nanoseconds time : {90, 110, 115, 190, 210}) {
        EXPECT_TRUE(near.contains(record(0), 0, time)) << time;
    }
    for (const Nanoseconds time : {0, 89, 116, 189, 211}) {
        EXPECT_FALSE(near.contains(record(0), 0, time)) << time;
    }
}

TEST(Selection, TakesTheSlotsOfLongCalls) {
    Selection longer = selected({.longer = 1'000'000});
    EXPECT_TRUE(longer.needsSurvey());
    longer.setLongCalls({3, 8});
    EXPECT_TRUE(longer.contains(record(0), 8, 0));
    EXPECT_FALSE(longer.contains(record(0), 7, 0));
}

TEST(Selection, RefusesNamesThatFitNothingWithTheNearest) {
    EXPECT_EQ(refusalOf({.drivers = {"OrvelHDAPth"}}),
              "no driver is called 'OrvelHDAPth'; the nearest are 'OrvelHDAPath', 'OrvelHDATDM' "
              "and 'OrvelHDANode'");
    EXPECT_EQ(refusalOf({.drivers = {"64"}}), "no driver is called '64'");
    EXPECT_EQ(refusalOf({.methods = {"setPathFromat"}}),
              "no method is called 'setPathFromat'; the nearest are 'setPathFormat' and "
              "'setPathSetFormat'");
    EXPECT_EQ(refusalOf({.where = "result == 1 && chanelID == 3"}).substr(0, 61),
              "no value is called 'chanelID'; the nearest are 'channelID', '");
    EXPECT_EQ(refusalOf({.where = "channelID == red"}),
              "'channelID' is a number\n  channelID == red\n               ^");
}

}  // namespace
}  // namespace sonaprobe
