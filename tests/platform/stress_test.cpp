// Producers that are killed at random moments, and readers beside them: no record is torn, and
// each one is accounted for.

#include <atomic>
#include <chrono>
#include <map>
#include <random>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "facility_fixture.h"

namespace sonaprobe::standin {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr uint64_t hashOf(const RecordWords& words) {
    uint64_t hash = 14695981039346656037U;
    for (const size_t i : {1U, 2U, 3U, 4U, 6U}) hash = (hash ^ words[i]) * 1099511628211U;
    return hash;
}

// A record that carries a hash of itself in argument 5.
RecordWords sealed(uint64_t producer, uint64_t number, std::mt19937_64& random) {
    RecordWords words{number, producer, number, random(), random(), 0, random()};
    words[5] = hashOf(words);
    return words;
}

// What producers count in memory that outlives them.
struct Counted {
    std::atomic<uint64_t> tried;
    std::atomic<uint64_t> logged;
};

// Posts for ever, or until told to stop, with a pause after each hundred records if one is given.
void produce(uint64_t id, Counted& counted, const std::atomic<bool>& stop, useconds_t pause) {
    std::mt19937_64 random(id);
    Producer producer;
    if (!attachProducer(producer)) return;
    for (uint64_t number = 1; !stop; number++) {
        const RecordWords words = sealed(id, number, random);
        counted.tried++;
        if (post(producer, words)) counted.logged++;
        if (pause != 0 && number % 100 == 0) usleep(pause);
    }
    detachProducer(producer);
}

// Reads and checks, and restarts tracing after a wrap as a live run does.
class Consumer {
  public:
    explicit Consumer(size_t room) : buffer_(room * kSlotWords) {}

    void pass() {
        platform::KernelBufferInfo info{};
        ASSERT_EQ(getBufferInfo(info), 0);
        uint64_t count = 0;
        ASSERT_EQ(readRecords(reinterpret_cast<unsigned char*>(buffer_.data()),
                              buffer_.size() / kSlotWords, count),
                  0);
        if ((info.flags & platform::kBufferWrapped) != 0) {
            ASSERT_EQ(enableTracing(false), 0);
            ASSERT_EQ(enableTracing(true), 0);
            wraps++;
        }
        seen += count;
        for (uint64_t i = 0; i < count; i++) {
            RecordWords words;
            std::copy_n(&buffer_[i * kSlotWords], words.size(), words.begin());
            ASSERT_EQ(words[5], hashOf(words)) << "a torn record";
            ASSERT_GT(words[2], std::exchange(newest_[words[1]], words[2])) << "out of order";
        }
    }

    uint64_t seen = 0;
    uint64_t wraps = 0;

  private:
    std::vector<uint64_t> buffer_;
    std::map<uint64_t, uint64_t> newest_;  // number of the last record, by producer
};

class Stress : public FacilityTest {
  protected:
    // Two producer processes, one of them killed and replaced every few milliseconds. The pause, in
    // microseconds, lets the reader keep up.
    void run(uint32_t entries, std::chrono::milliseconds length, useconds_t pause) {
        void* shared = mmap(nullptr, sizeof(Counted), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(shared, MAP_FAILED);
        auto& counted = *static_cast<Counted*>(shared);
        setUpWith(entries);

        uint64_t nextId = 1;
        const auto start = [&] {
            const uint64_t id = nextId++;
            return startChild([&counted, id, pause] {
                const std::atomic<bool> never{false};
                produce(id, counted, never, pause);
                return 0;
            });
        };
        const auto stop = [](pid_t child) {
            kill(child, SIGKILL);
            EXPECT_EQ(waitFor(child), -1);
        };
        pid_t producers[] = {start(), start()};
        std::minstd_rand random(7);
        Consumer consumer(entries);
        const auto end = SteadyClock::now() + length;
        auto nextKill = SteadyClock::now();
        while (SteadyClock::now() < end) {
            if (SteadyClock::now() >= nextKill) {
                pid_t& victim = producers[kills % 2];
                stop(victim);
                kills++;
                victim = start();
                nextKill = SteadyClock::now() + std::chrono::microseconds(random() % 20'000);
            }
            consumer.pass();
            if (HasFatalFailure()) break;
        }
        for (const pid_t producer : producers) stop(producer);
        kills += 2;

        consumer.pass();
        const FacilityStatus status = statusNow();
        EXPECT_EQ(status.pending, 0U);
        EXPECT_EQ(status.posted, consumer.seen + status.lost);
        EXPECT_GE(status.posted, counted.logged);
        EXPECT_LE(status.posted, counted.logged + kills);
        EXPECT_LE(status.posted, counted.tried);
        EXPECT_GT(consumer.seen, 10'000U);
        lost = status.lost;
        wraps = consumer.wraps;
        munmap(shared, sizeof(Counted));
    }

    uint64_t kills = 0;
    uint64_t lost = 0;
    uint64_t wraps = 0;
};

TEST_F(Stress, KilledProducersLoseOneRecordEachAtMost) {
    run(1'000'000, std::chrono::seconds(3), 200);
    EXPECT_EQ(wraps, 0U);
    EXPECT_LE(lost, kills);
}

TEST_F(Stress, LapsAreCountedToTheRecord) {
    run(1024, std::chrono::seconds(3), 0);
    EXPECT_GT(wraps, 0U);
    EXPECT_GT(lost, 0U);
}

// For the thread sanitizer: everything in one process.
TEST_F(Stress, ThreadsPostBesideAReader) {
    setUpWith(4096);
    Counted counted{};
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (uint64_t id = 1; id <= 3; id++) {
        threads.emplace_back([&, id] { produce(id, counted, stop, 0); });
    }
    Consumer consumer(4096);
    const auto end = SteadyClock::now() + std::chrono::milliseconds(500);
    for (int pass = 0; SteadyClock::now() < end && !HasFatalFailure(); pass++) {
        consumer.pass();
        if (pass % 64 == 0) {
            EXPECT_EQ(setInterest(kEverything), 0);
        }
    }
    stop = true;
    for (std::thread& thread : threads) thread.join();
    consumer.pass();
    const FacilityStatus status = statusNow();
    EXPECT_EQ(status.posted, counted.logged);
    EXPECT_EQ(status.posted, consumer.seen + status.lost);
}

}  // namespace
}  // namespace sonaprobe::standin
