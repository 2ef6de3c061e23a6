// Reading raw files through the C interface: from wherever they are, to wherever they end.

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

#include "library.h"

namespace sonaprobe::library {
namespace {

constexpr TraceRecord record(uint64_t time) { return slotOf(kSomeStart, time); }

// A divisor, a record, an invalid slot, a record, and the beginning of a slot.
std::string trace() {
    const TraceRecord slots[] = {slotOf(kDivisorMarker, 24), record(1), slotOf(kInvalidMarker),
                                 record(2), record(3)};
    const auto bytes = std::as_bytes(std::span(slots)).first(sizeof slots - 10);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void expectTrace(sonaprobe_reader* reader) {
    const sonaprobe_event* event = nullptr;
    for (const uint64_t time : {1U, 2U}) {
        ASSERT_EQ(sonaprobe_next(reader, &event), 1);
        EXPECT_EQ(sonaprobe_event_time(event), time);
        EXPECT_EQ(sonaprobe_event_ticks_per_microsecond(event), 24.0);
    }
    EXPECT_EQ(sonaprobe_next(reader, &event), 0);
    EXPECT_EQ(sonaprobe_cut_bytes(reader), 54U);
}

class Reading : public testing::Test {
  protected:
    const std::string path_ = testing::TempDir() + "library_test.raw";

    void SetUp() override { std::ofstream(path_) << trace(); }
    void TearDown() override { ::unlink(path_.c_str()); }
};

TEST_F(Reading, FromAFile) {
    sonaprobe_reader* reader = nullptr;
    ASSERT_EQ(sonaprobe_open_file(&reader, path_.c_str()), 0);
    expectTrace(reader);
    sonaprobe_close(reader);
}

TEST_F(Reading, FromADescriptorThatStaysOpen) {
    const int file = ::open(path_.c_str(), O_RDONLY);
    sonaprobe_reader* reader = nullptr;
    ASSERT_EQ(sonaprobe_open_descriptor(&reader, file), 0);
    expectTrace(reader);
    sonaprobe_close(reader);
    EXPECT_EQ(::close(file), 0);
}

TEST_F(Reading, AFileIsClosedWithItsReader) {
    sonaprobe_reader* reader = nullptr;
    ASSERT_EQ(sonaprobe_open_file(&reader, path_.c_str()), 0);
    sonaprobe_close(reader);
    const int next = ::open(path_.c_str(), O_RDONLY);
    ASSERT_EQ(sonaprobe_open_file(&reader, path_.c_str()), 0);
    sonaprobe_close(reader);
    const int after = ::open(path_.c_str(), O_RDONLY);
    EXPECT_EQ(after, next + 1);
    ::close(next);
    ::close(after);
}

TEST_F(Reading, FromMemoryWithoutAlignment) {
    const std::string bytes = "x" + trace();
    const Reader reader = readerOf(std::as_bytes(std::span(bytes)).subspan(1));
    expectTrace(reader.get());
    const Reader empty = readerOf({});
    const sonaprobe_event* event = nullptr;
    EXPECT_EQ(sonaprobe_next(empty.get(), &event), 0);
}

TEST_F(Reading, GoesOnAfterAnEndThatHasMoved) {
    sonaprobe_reader* reader = nullptr;
    ASSERT_EQ(sonaprobe_open_file(&reader, path_.c_str()), 0);
    expectTrace(reader);
    const TraceRecord last = record(3);
    std::ofstream(path_, std::ios::app)
        .write(reinterpret_cast<const char*>(&last) + sizeof last - 10, 10);
    const sonaprobe_event* event = nullptr;
    ASSERT_EQ(sonaprobe_next(reader, &event), 1);
    EXPECT_EQ(sonaprobe_event_time(event), 3U);
    EXPECT_EQ(sonaprobe_next(reader, &event), 0);
    EXPECT_EQ(sonaprobe_cut_bytes(reader), 0U);
    sonaprobe_close(reader);
}

TEST_F(Reading, GoesOnAfterADescriptorThatWasNotReady) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    fcntl(pipe[0], F_SETFL, O_NONBLOCK);
    sonaprobe_reader* reader = nullptr;
    ASSERT_EQ(sonaprobe_open_descriptor(&reader, pipe[0]), 0);
    const sonaprobe_event* event = nullptr;
    EXPECT_EQ(sonaprobe_next(reader, &event), -EAGAIN);
    const std::string bytes = trace();
    ASSERT_EQ(::write(pipe[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(pipe[1]);
    expectTrace(reader);
    sonaprobe_close(reader);
    ::close(pipe[0]);
}

TEST_F(Reading, SlotsAreCountedWhateverTheyHold) {
    const std::string bytes = trace();
    const Reader reader = readerOf(std::as_bytes(std::span(bytes)));
    const sonaprobe_event* event = nullptr;
    ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
    EXPECT_EQ(sonaprobe_event_slot(event), 1U);
    EXPECT_EQ(sonaprobe_invalid_slots(reader.get()), 0U);
    ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
    EXPECT_EQ(sonaprobe_event_slot(event), 3U);
    EXPECT_EQ(sonaprobe_invalid_slots(reader.get()), 1U);
}

TEST_F(Reading, AKeptRecordIsItsEventAgainWhateverCameBetween) {
    const TraceRecord slots[] = {slotOf(kDivisorMarker, 24), record(1), slotOf(kDivisorMarker, 25),
                                 slotOf(0x05240C2C | 1, 2), record(3)};
    const Reader reader = readerOf(std::as_bytes(std::span(slots)));
    const sonaprobe_event* event = nullptr;
    ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
    sonaprobe_record kept;
    sonaprobe_event_keep(event, &kept);
    const std::string text = sonaprobe_event_text(event, nullptr);
    ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
    EXPECT_NE(sonaprobe_event_text(event, nullptr), text);

    const sonaprobe_event* again = sonaprobe_event_again(reader.get(), &kept);
    EXPECT_EQ(sonaprobe_event_time(again), 1U);
    EXPECT_EQ(sonaprobe_event_slot(again), 1U);
    EXPECT_EQ(sonaprobe_event_ticks_per_microsecond(again), 24.0);
    EXPECT_EQ(sonaprobe_event_text(again, nullptr), text);

    const Reader other = readerOf({});
    EXPECT_EQ(sonaprobe_event_text(sonaprobe_event_again(other.get(), &kept), nullptr), text);

    ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
    EXPECT_EQ(sonaprobe_event_slot(event), 4U);
    EXPECT_EQ(sonaprobe_event_ticks_per_microsecond(event), 25.0);
}

TEST_F(Reading, TellsWhatIsNoFile) {
    sonaprobe_reader* reader = nullptr;
    EXPECT_EQ(sonaprobe_open_file(&reader, "/no/such/file"), -ENOENT);
    EXPECT_EQ(reader, nullptr);
    ASSERT_EQ(sonaprobe_open_file(&reader, "/"), 0);
    const sonaprobe_event* event = nullptr;
    EXPECT_EQ(sonaprobe_next(reader, &event), -EISDIR);
    sonaprobe_close(reader);
    ASSERT_EQ(sonaprobe_open_descriptor(&reader, -1), 0);
    EXPECT_EQ(sonaprobe_next(reader, &event), -EBADF);
    sonaprobe_close(reader);
}

TEST_F(Reading, NothingIsClosedOfNothing) {
    sonaprobe_close(nullptr);
    sonaprobe_close_printer(nullptr);
    sonaprobe_close_names(nullptr);
}

}  // namespace
}  // namespace sonaprobe::library
