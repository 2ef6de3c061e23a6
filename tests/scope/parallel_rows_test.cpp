// Rows made on several threads come in the order of the records, however long each one takes, and
// whatever stops them. The thread sanitizer sees to it that the threads share nothing.

#include "scope/export/parallel_rows.h"

#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>

namespace sonaprobe::scope {
namespace {

constexpr uint64_t kRecords = 50'000;
constexpr uint64_t kNoSlot = UINT64_MAX;

// A head, then a line for each record: its slot and what its copy says.
class Numbers final : public Format {
  public:
    Numbers(TextOutput& out, uint64_t failsAt) : out_(&out), failsAt_(failsAt) {
        out_->put("head\n");
    }

    void record(const ToldRecord& told) override {
        if (told.slot == failsAt_) throw std::runtime_error("failed");
        if (told.slot % 5000 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(told.record, told.event.record);
        out_->put(std::to_string(told.slot) + " " + std::to_string(told.record->arg1) + "\n");
    }

  private:
    TextOutput* out_;
    uint64_t failsAt_;
};

ParallelRows::Make numbers(uint64_t failsAt = kNoSlot) {
    return [failsAt](TextOutput& out) { return std::make_unique<Numbers>(out, failsAt); };
}

// One record after the other in the same place, as a trace is read.
void tell(Format& format, uint64_t count) {
    TraceRecord record{};
    for (uint64_t slot = 0; slot < count; ++slot) {
        record.arg1 = slot * slot;
        format.record({.record = &record, .event = decode(record), .slot = slot});
    }
    format.finish(TraceClock{});
}

void append(void* text, const char* piece, size_t length) {
    static_cast<std::string*>(text)->append(piece, length);
}

std::string written(unsigned threads, uint64_t count) {
    std::string text;
    TextOutput out({.write = append, .context = &text});
    if (threads == 0) {
        tell(*numbers()(out), count);
    } else {
        ParallelRows rows(threads, numbers(), out);
        tell(rows, count);
    }
    out.handOver();
    return text;
}

TEST(ParallelRows, AreTheRowsOfOneThread) {
    for (const uint64_t count :
         {uint64_t{0}, uint64_t{1}, uint64_t{256}, uint64_t{257}, kRecords}) {
        const std::string alone = written(0, count);
        for (const unsigned threads : {1U, 2U, 5U}) {
            EXPECT_EQ(written(threads, count), alone) << threads << " threads, " << count;
        }
    }
}

TEST(ParallelRows, FailWhereAThreadFails) {
    std::string text;
    TextOutput out({.write = append, .context = &text});
    ParallelRows rows(3, numbers(30'000), out);
    EXPECT_THROW(tell(rows, kRecords), std::runtime_error);
}

// As into a pipe whose reader has gone.
TEST(ParallelRows, EndWhereTheOutputFails) {
    TextOutput out({.write = [](void*, const char*, size_t) { throw std::runtime_error("closed"); },
                    .context = nullptr});
    ParallelRows rows(3, numbers(), out);
    EXPECT_THROW(tell(rows, kRecords), std::runtime_error);
}

}  // namespace
}  // namespace sonaprobe::scope
