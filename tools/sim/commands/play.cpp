// sonaprobe-sim play: simulated drivers post a scenario's records in real time.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <vector>

#include "platform/standin/clock.h"
#include "platform/standin/producer.h"
#include "sim/arguments.h"
#include "sim/command.h"
#include "sim/messages.h"
#include "sim/stage.h"

namespace sonaprobe::sim {
namespace {

constexpr uint64_t kMostRate = 1'000'000'000;
constexpr uint64_t kMostSeconds = 1'000'000'000;
constexpr uint64_t kMostProducers = 64;
constexpr Ticks kLongestSleep = ms(20);  // within which a producer notices that it is to end
constexpr Ticks kMostLag = ms(100);      // what is later than this is not caught up with
constexpr uint64_t kClockInterval = 64;  // records between looks at the clock when late
constexpr Ticks kAttachInterval = ms(100);

// What a producer has done so far; read by others while it goes on.
struct alignas(64) Tally {
    std::atomic<uint64_t> posted;
    std::atomic<uint64_t> logged;
    std::atomic<int> error;  // why it could not attach to the facility, and gave up
};

struct Totals {
    uint64_t posted = 0;
    uint64_t logged = 0;
};

struct Performance {
    const Scenario* scenario;
    uint64_t seed;
    double pace;
    std::vector<Tally> tallies;
    std::atomic<bool> ending{false};
};

bool isKernelDriver(const TraceRecord& record) {
    return classWordOf(record.debugid) == kAudioClassWord;
}

void sleepUntil(Ticks due, Ticks from) {
    const auto length = nanoseconds(std::min(due - from, kLongestSleep));
    const timespec time{0, static_cast<long>(length)};
    nanosleep(&time, nullptr);
}

// Waits for a record's time. False when it is to end first.
bool waitFor(Performance& performance, Ticks due, Ticks& now) {
    for (;;) {
        if (performance.ending.load(std::memory_order_relaxed)) return false;
        now = standin::now();
        if (due <= now) return true;
        sleepUntil(due, now);
    }
}

// One producer: a set of drivers of its own, on a thread of its own.
void produce(Performance& performance, uint32_t number) {
    Tally& tally = performance.tallies[number];
    standin::Producer producer;
    Ticks attached = 0;
    Stage stage = makeStage(*performance.scenario, performance.seed, number);
    stage.clock = {standin::now(), performance.pace};
    uint64_t posted = 0;
    uint64_t logged = 0;
    uint64_t sinceLook = 0;
    Ticks now = 0;
    TraceRecord record{};
    for (;;) {
        if (!nextRecord(stage, record)) {
            beginRound(stage);
            continue;
        }
        if (record.timestamp > now || ++sinceLook == kClockInterval) {
            sinceLook = 0;
            if (!waitFor(performance, record.timestamp, now)) break;
            if (now - attached > kAttachInterval) {
                attached = now;
                if (!standin::attachProducer(producer)) {
                    tally.error = errno;
                    break;
                }
            }
            if (now - record.timestamp > kMostLag) {
                stage.clock.origin += now - record.timestamp;
                record.timestamp = now;
            }
        }
        if (isKernelDriver(record) &&
            (standin::audioDebugFlags(producer) & platform::kAudioTracingOn) == 0) {
            continue;
        }
        standin::RecordWords words;
        std::memcpy(words.data(), &record, sizeof words);
        posted++;
        if (standin::post(producer, words)) logged++;
        tally.posted.store(posted, std::memory_order_relaxed);
        tally.logged.store(logged, std::memory_order_relaxed);
    }
    standin::detachProducer(producer);
}

Totals totalsOf(const Performance& performance) {
    Totals totals;
    for (const Tally& tally : performance.tallies) {
        totals.posted += tally.posted;
        totals.logged += tally.logged;
    }
    return totals;
}

int errorOf(const Performance& performance) {
    for (const Tally& tally : performance.tallies) {
        if (tally.error != 0) return tally.error;
    }
    return 0;
}

// Ticks in the stories for a record, taken over one round.
double ticksPerRecord(const Scenario& scenario, uint64_t seed) {
    Stage stage = makeStage(scenario, seed, 0);
    beginRound(stage);
    TraceRecord record{};
    uint64_t records = 0;
    while (nextRecord(stage, record)) records++;
    return static_cast<double>(stage.time) / static_cast<double>(records);
}

// Shows the progress until the time is over, a signal comes or a producer has given up.
void watch(Performance& performance, uint64_t seconds, const sigset_t& awaited) {
    const bool shown = isatty(STDERR_FILENO) != 0;
    const Ticks begun = standin::now();
    const Ticks end =
        seconds == 0 ? std::numeric_limits<Ticks>::max() : begun + seconds * kTicksPerSecond;
    Ticks now = begun;
    while (now < end && errorOf(performance) == 0) {
        const auto rest = nanoseconds(std::min(end - now, ms(250)));
        const timespec time{0, static_cast<long>(rest)};
        if (sigtimedwait(&awaited, nullptr, &time) > 0) break;
        now = standin::now();
        if (!shown) continue;
        const Totals totals = totalsOf(performance);
        std::fprintf(stderr, "\r%" PRIu64 " s: %" PRIu64 " records posted, %" PRIu64 " logged",
                     (now - begun) / kTicksPerSecond, totals.posted, totals.logged);
    }
    if (shown) std::fputs("\r\033[K", stderr);
}

}  // namespace

int runPlay(Arguments arguments) {
    const char* name = nullptr;
    uint64_t rate = 0;
    uint64_t seconds = 0;
    uint64_t producers = 1;
    uint64_t seed = 1;
    const Operand operands[] = {{"SCENARIO", &name}};
    const NumberOption options[] = {{"rate", &rate, 1, kMostRate},
                                    {"seconds", &seconds, 1, kMostSeconds},
                                    {"threads", &producers, 1, kMostProducers},
                                    {"seed", &seed, 0, std::numeric_limits<uint64_t>::max()}};
    if (!readArguments(arguments, operands, options)) return 1;
    const Scenario* const scenario = findScenario(name);
    if (scenario == nullptr) return 1;
    Performance performance{
        .scenario = scenario, .seed = seed, .pace = 1, .tallies = std::vector<Tally>(producers)};
    if (rate != 0) {
        const double ticks = ticksPerRecord(*scenario, seed);
        performance.pace =
            static_cast<double>(kTicksPerSecond * producers) / static_cast<double>(rate) / ticks;
    }

    // Before the producers begin, so that a signal comes to watch() and to nobody else.
    sigset_t awaited;
    sigemptyset(&awaited);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&awaited, signal);
    sigprocmask(SIG_BLOCK, &awaited, nullptr);
    std::vector<std::thread> threads;
    for (uint32_t number = 0; number < producers; number++) {
        threads.emplace_back([&performance, number] { produce(performance, number); });
    }
    watch(performance, seconds, awaited);
    performance.ending = true;
    for (std::thread& thread : threads) thread.join();

    if (const int error = errorOf(performance); error != 0) {
        // What lies behind it is known to the producer's thread alone, so this one tries as well.
        standin::Producer producer;
        return facilityFailure("play", standin::attachProducer(producer) ? error : errno);
    }
    const Totals totals = totalsOf(performance);
    printLogged(totals.logged, totals.posted);
    return 0;
}

}  // namespace sonaprobe::sim
