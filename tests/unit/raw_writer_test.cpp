// The raw file's writer as a class: what it owns, and when its bytes go out.

#include "rawfile/raw_writer.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace sonaprobe {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::vector<std::pair<uint64_t, int>> lostRecords;  // time stamp and errno

constexpr RawWriter::Policy kNoteLost{.lost = [](const TraceRecord& record, int error) {
    lostRecords.emplace_back(record.timestamp, error);
}};

TraceRecord recordAt(uint64_t timestamp) {
    TraceRecord record{};
    record.timestamp = timestamp;
    record.debugid = 0x05245C0E;
    record.reserved = ~uint64_t{0};
    return record;
}

class RawWriterTest : public testing::Test {
  protected:
    void SetUp() override { lostRecords.clear(); }
};

// A file without a name, read again from its begin.
class Scratch {
  public:
    Scratch() {
        char path[] = "/tmp/raw-writer-XXXXXX";
        file_ = ::mkstemp(path);
        ::unlink(path);
    }
    ~Scratch() { ::close(file_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // A descriptor for a writer to own.
    int descriptor() const { return ::fcntl(file_, F_DUPFD_CLOEXEC, 0); }

    // The slots' time stamps.
    std::vector<uint64_t> stamps() const {
        std::vector<uint64_t> found;
        TraceRecord slot{};
        for (off_t at = 0; ::pread(file_, &slot, sizeof slot, at) == ssize_t{sizeof slot};
             at += off_t{sizeof slot}) {
            EXPECT_EQ(slot.reserved, 0);
            found.push_back(slot.timestamp);
        }
        return found;
    }

  private:
    int file_ = -1;
};

TEST_F(RawWriterTest, HoldsRecordsBackOnItsOwn) {
    const Scratch one;
    const Scratch two;
    RawWriter first(one.descriptor(), kNoteLost);
    RawWriter second(two.descriptor(), kNoteLost);
    first.store(recordAt(1));
    second.store(recordAt(2));
    first.store(recordAt(3));
    first.writeHeld();
    EXPECT_THAT(one.stamps(), ElementsAre(1, 3));
    EXPECT_THAT(two.stamps(), IsEmpty());
    second.writeHeld();
    EXPECT_THAT(two.stamps(), ElementsAre(2));
    EXPECT_THAT(lostRecords, IsEmpty());
}

TEST_F(RawWriterTest, WritesABlockOnceItIsFull) {
    const Scratch scratch;
    RawWriter writer(scratch.descriptor(), kNoteLost);
    for (uint64_t n = 1; n < RawWriter::kBlockSlots; ++n) writer.store(recordAt(n));
    EXPECT_THAT(scratch.stamps(), IsEmpty());
    writer.store(recordAt(RawWriter::kBlockSlots));
    EXPECT_EQ(scratch.stamps().size(), RawWriter::kBlockSlots);
}

TEST_F(RawWriterTest, PutsTheDivisorAfterWhatIsHeldBack) {
    const Scratch scratch;
    RawWriter writer(scratch.descriptor(), kNoteLost);
    writer.store(recordAt(1));
    EXPECT_EQ(writer.writeDivisor(24), 0);
    EXPECT_THAT(scratch.stamps(), ElementsAre(1, 24));
}

TEST_F(RawWriterTest, WritesTheRestAndClosesItsFileAtTheEnd) {
    const Scratch scratch;
    const int file = scratch.descriptor();
    {
        RawWriter writer(file, kNoteLost);
        writer.store(recordAt(7));
    }
    EXPECT_THAT(scratch.stamps(), ElementsAre(7));
    EXPECT_EQ(::fcntl(file, F_GETFD), -1);
}

TEST_F(RawWriterTest, TellsOfEachRecordThatIsLost) {
    RawWriter writer(::open("/dev/full", O_WRONLY | O_CLOEXEC), kNoteLost);
    EXPECT_EQ(writer.writeDivisor(24), ENOSPC);
    writer.store(recordAt(1));
    writer.store(recordAt(2));
    EXPECT_THAT(lostRecords, IsEmpty());
    writer.writeHeld();
    EXPECT_THAT(lostRecords, ElementsAre(Pair(1, ENOSPC), Pair(2, ENOSPC)));
}

TEST_F(RawWriterTest, WritesNothingMoreOnceItMayNotGoOn) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const auto room = static_cast<size_t>(::fcntl(ends[1], F_SETPIPE_SZ, 4096));
    RawWriter writer(ends[1], {.lost = kNoteLost.lost, .goesOn = [](RawWriter::Broken broken) {
                                   EXPECT_EQ(broken, RawWriter::Broken::inPart);
                                   return false;
                               }});
    const size_t fitting = room / sizeof(TraceRecord);
    for (uint64_t n = 1; n <= fitting + 2; ++n) writer.store(recordAt(n));
    writer.writeHeld();
    EXPECT_THAT(lostRecords, ElementsAre(Pair(fitting + 1, EINTR), Pair(fitting + 2, EINTR)));
    std::vector<char> bytes(2 * room);
    EXPECT_EQ(::read(ends[0], bytes.data(), bytes.size()), static_cast<ssize_t>(room));
    writer.store(recordAt(99));
    writer.writeHeld();
    EXPECT_THAT(lostRecords.back(), Pair(99, EINTR));
    EXPECT_EQ(::read(ends[0], bytes.data(), bytes.size()), -1);
    ::close(ends[0]);
}

}  // namespace
}  // namespace sonaprobe
