// Which events tell of a failure.

#include "events/event.h"

#include <gtest/gtest.h>

namespace sonaprobe {
namespace {

struct Case {
    const char* what;
    uint32_t debugid;
    uint64_t arg2;
    uint64_t arg3;
    uint64_t arg4;
    bool failure;
};

constexpr Case kCases[] = {
    {"a text that begins with ERROR", 0x05245028, 0, 0, 1, true},
    {"a text with a mark of its own", 0x05241160, 0, 0, 1, true},
    {"a text that does neither", 0x05245028, 7, 7, 0, false},
    {"a result", 0x05245042, 0, 0, 0xE00002ED, true},
    {"a result of 0", 0x05245042, 1, 1, 0, false},
    {"a return code", 0x0524B40E, 0, 5, 0, true},
    {"a whole returned word", 0x05245C22, 0, 0, uint64_t{1} << 32, true},
    {"a returned boolean", 0x0524582A, 0, 0, 1, false},
    {"a time that is called result", 0x05249852, 7, 0, 0, false},
    {"an event without a text", 0x05245C0F, 0, 0, 9, false},
    {"an unknown event", 0x052453FC, 1, 1, 1, false},
};

TEST(EventTest, ErrorsAndResultsAreFailures) {
    for (const Case& c : kCases) {
        TraceRecord record{};
        record.debugid = c.debugid;
        record.arg2 = c.arg2;
        record.arg3 = c.arg3;
        record.arg4 = c.arg4;
        EXPECT_EQ(isFailure(decode(record)), c.failure) << c.what;
    }
}

}  // namespace
}  // namespace sonaprobe
