// How fast the stand-in facility takes and hands out records, and what an idle pass of a live run
// costs. Resets the facility; run as root.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/standin/clock.h"
#include "platform/standin/facility.h"
#include "platform/standin/producer.h"

namespace {

using namespace sonaprobe;
using namespace sonaprobe::standin;

constexpr uint32_t kEntries = 5'000'000;
constexpr useconds_t kPassPeriod = 20'000;

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double millions(uint64_t count, double seconds) {
    return static_cast<double>(count) / seconds / 1e6;
}

bool setUpEnabled() {
    return resetFacility() == 0 && setBufferSize(kEntries) == 0 && setUp() == 0 &&
           enableTracing(true) == 0;
}

void postOne(Producer& producer) { post(producer, {now(), 1, 2, 3, 4, 5, 0x05245C0C}); }

// A full buffer written, then read; the second lap finds all its memory mapped.
void benchAlone(std::vector<unsigned char>& records) {
    Producer producer;
    if (!attachProducer(producer)) return;
    for (int lap = 1; lap <= 2; lap++) {
        const double start = secondsNow();
        for (uint32_t i = 0; i < kEntries; i++) postOne(producer);
        const double posted = secondsNow();
        uint64_t count = 0;
        readRecords(records.data(), kEntries, count);
        std::printf("lap %d: post %.1f, read %.1f million records/s\n", lap,
                    millions(kEntries, posted - start), millions(count, secondsNow() - posted));
    }
    detachProducer(producer);
}

void benchIdle(std::vector<unsigned char>& records) {
    constexpr int kPasses = 100'000;
    const double start = processorSeconds();
    for (int i = 0; i < kPasses; i++) {
        platform::KernelBufferInfo info;
        uint64_t count = 0;
        getBufferInfo(info);
        readRecords(records.data(), kEntries, count);
    }
    std::printf("idle pass: %.1f us of processor time\n",
                (processorSeconds() - start) / kPasses * 1e6);
}

// One producer flat out, one reader with the pace of a live run.
void benchTogether(std::vector<unsigned char>& records) {
    constexpr double kSeconds = 4;
    if (!setUpEnabled()) return;
    std::atomic<bool> stop{false};
    std::thread thread([&] {
        Producer producer;
        if (!attachProducer(producer)) return;
        while (!stop) postOne(producer);
        detachProducer(producer);
    });
    uint64_t seen = 0;
    const double start = secondsNow();
    while (secondsNow() - start < kSeconds) {
        uint64_t count = 0;
        readRecords(records.data(), kEntries, count);
        seen += count;
        usleep(kPassPeriod);
    }
    const double seconds = secondsNow() - start;
    stop = true;
    thread.join();
    FacilityStatus status{};
    getStatus(status);
    std::printf("together: posted %.1f, read %.1f million records/s, %ju lost\n",
                millions(status.posted, seconds), millions(seen, seconds), uintmax_t{status.lost});
}

}  // namespace

int main() {
    if (!setUpEnabled()) {
        std::fputs("cannot set up the trace facility; sonaprobe-sim status says why\n", stderr);
        return 1;
    }
    std::vector<unsigned char> records(size_t{kEntries} * kSlotBytes);
    benchAlone(records);
    benchIdle(records);
    benchTogether(records);
    return resetFacility();
}
