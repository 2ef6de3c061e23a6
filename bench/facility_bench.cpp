// How fast the stand-in facility takes and hands out records, what a pass over an empty ring costs,
// and how a reader at a live run's pace keeps up with a producer. Resets the facility; run as root.

#include <atomic>
#include <benchmark/benchmark.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/standin/clock.h"
#include "platform/standin/facility.h"
#include "platform/standin/producer.h"

namespace sonaprobe::standin {
namespace {

using benchmark::Counter;
using benchmark::State;

constexpr uint32_t kEntries = 5'000'000;
constexpr useconds_t kPassPeriod = 20'000;

// A ring that is set up and enabled, and room for all its records.
class RunningFacility {
  public:
    explicit RunningFacility(State& state) : records_(size_t{kEntries} * kSlotBytes) {
        ready_ = resetFacility() == 0 && setBufferSize(kEntries) == 0 && setUp() == 0 &&
                 enableTracing(true) == 0 && attachProducer(producer_);
        if (!ready_) state.SkipWithError("no trace facility; sonaprobe-sim status says why");
    }
    ~RunningFacility() {
        detachProducer(producer_);
        resetFacility();
    }
    RunningFacility(const RunningFacility&) = delete;
    RunningFacility& operator=(const RunningFacility&) = delete;

    bool ready() const { return ready_; }
    void postOne() { post(producer_, {now(), 1, 2, 3, 4, 5, 0x05245C0C}); }
    void fill() {
        for (uint32_t i = 0; i < kEntries; ++i) postOne();
    }
    uint64_t readAll() {
        uint64_t count = 0;
        readRecords(records_.data(), kEntries, count);
        return count;
    }

  private:
    Producer producer_;
    std::vector<unsigned char> records_;
    bool ready_ = false;
};

void ringPost(State& state) {
    RunningFacility facility(state);
    if (!facility.ready()) return;
    facility.fill();  // maps its memory
    for (auto _ : state) facility.postOne();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ringPost);

void ringRead(State& state) {
    RunningFacility facility(state);
    if (!facility.ready()) return;
    facility.fill();
    facility.readAll();
    int64_t records = 0;
    for (auto _ : state) {
        state.PauseTiming();
        facility.fill();
        state.ResumeTiming();
        records += static_cast<int64_t>(facility.readAll());
    }
    state.SetItemsProcessed(records);
}
BENCHMARK(ringRead)->Unit(benchmark::kMillisecond);

// The two operations of a pass.
void emptyPass(State& state) {
    RunningFacility facility(state);
    if (!facility.ready()) return;
    for (auto _ : state) {
        platform::KernelBufferInfo info;
        getBufferInfo(info);
        facility.readAll();
    }
}
BENCHMARK(emptyPass);

// One producer flat out, one reader with the pace of a live run.
void postWhileRead(State& state) {
    RunningFacility facility(state);
    if (!facility.ready()) return;
    std::atomic<bool> stop{false};
    std::thread producer([&] {
        while (!stop) facility.postOne();
    });
    int64_t seen = 0;
    for (auto _ : state) {
        seen += static_cast<int64_t>(facility.readAll());
        usleep(kPassPeriod);
    }
    stop = true;
    producer.join();
    FacilityStatus status{};
    getStatus(status);
    state.SetItemsProcessed(seen);
    state.counters["lost"] = static_cast<double>(status.lost);
}
BENCHMARK(postWhileRead)->Iterations(200)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sonaprobe::standin

BENCHMARK_MAIN();
