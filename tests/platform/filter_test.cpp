// Which debug ids each kind of filter lets through, alone and on the road of a record.

#include "platform/standin/filter.h"

#include "facility_fixture.h"

namespace sonaprobe::standin {
namespace {

using platform::TraceInterest;

struct FilterCase {
    TraceInterest interest;
    uint32_t debugid;
    bool passes;
};

constexpr uint32_t kRange = platform::kInterestRange;
constexpr uint32_t kSubclass = platform::kInterestSubclass;
constexpr uint32_t kValues = platform::kInterestValues;

constexpr FilterCase kCases[] = {
    {{kRange, 0, 0xFFFFFFFF, 0, 0}, 0, true},
    {{kRange, 0, 0xFFFFFFFF, 0, 0}, 0xFFFFFFFF, true},
    {{kRange, 0x100, 0x200, 0, 0}, 0xFF, false},
    {{kRange, 0x100, 0x200, 0, 0}, 0x100, true},
    {{kRange, 0x100, 0x200, 0, 0}, 0x200, true},
    {{kRange, 0x100, 0x200, 0, 0}, 0x201, false},
    {{kRange, 0x200, 0x100, 0, 0}, 0x180, false},
    {{kRange, 0x100, 0x100, 0x300, 0x300}, 0x300, false},
    {{kSubclass, 0x05, 0x24, 0, 0}, 0x05245C0C, true},
    {{kSubclass, 0x05, 0x24, 0, 0}, 0x0524FFFF, true},
    {{kSubclass, 0x05, 0x24, 0, 0}, 0x05250000, false},
    {{kSubclass, 0x05, 0x24, 0, 0}, 0x06240000, false},
    {{kSubclass, 0x105, 0x24, 0, 0}, 0x05240000, false},
    {{kValues, 0x10, 0x20, 0x30, 0x40}, 0x10, true},
    {{kValues, 0x10, 0x20, 0x30, 0x40}, 0x21, true},
    {{kValues, 0x10, 0x20, 0x30, 0x40}, 0x32, true},
    {{kValues, 0x10, 0x20, 0x30, 0x40}, 0x43, true},
    {{kValues, 0x10, 0x20, 0x30, 0x40}, 0x44, false},
    {{kValues, 0x11, 0, 0, 0}, 0x11, false},
    {{kValues, 0x10, 0, 0, 0}, 3, true},
    {{0, 0, 0xFFFFFFFF, 0, 0}, 1, false},
};

TEST(Filter, LetsThroughWhatItsKindSays) {
    for (const FilterCase& row : kCases) {
        EXPECT_EQ(passes(row.interest, row.debugid), row.passes)
            << std::hex << row.interest.type << ' ' << row.interest.value1 << ' '
            << row.interest.value2 << ": " << row.debugid;
    }
}

using FilteredPosting = FacilityTest;

TEST_F(FilteredPosting, DropsWhatTheFilterHolds) {
    setUpWith(1024);
    Producer producer;
    ASSERT_TRUE(attachProducer(producer));
    EXPECT_TRUE(post(producer, recordOf(0x05245C0C, 1)));
    ASSERT_EQ(setInterest({kSubclass, 0x21, 0x04, 0, 0}), 0);
    EXPECT_FALSE(post(producer, recordOf(0x05245C0C, 2)));
    EXPECT_TRUE(post(producer, recordOf(0x21040000, 3)));
    const auto records = readAll(8);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1], recordOf(0x21040000, 3));
    EXPECT_EQ(statusNow().posted, 2U);
    detachProducer(producer);
}

}  // namespace
}  // namespace sonaprobe::standin
