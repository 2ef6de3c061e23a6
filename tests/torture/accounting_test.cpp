// posted = seen + lost, counted by those who post and those who see, while producers and owners are
// killed at random moments. SONAPROBE_ACCOUNTING_RECORDS asks for a longer run.

#include <array>
#include <atomic>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include "facility_fixture.h"

namespace sonaprobe::standin {
namespace {

constexpr uint32_t kEntries = 200'000;
constexpr size_t kProducers = 3;

// What outlives the processes that are killed. A producer killed between posting and counting has
// logged one more than it counted, an owner has seen one batch more.
struct Counted {
    std::atomic<uint64_t> logged;
    std::atomic<uint64_t> seen;
    std::atomic<uint64_t> torn;
};

constexpr uint64_t sealOf(uint64_t producer, uint64_t number) {
    return (producer << 48 ^ number) * 0x9E3779B97F4A7C15;
}

int produce(uint64_t id, Counted& counted) {
    Producer producer;
    for (uint64_t number = 1;; ++number) {
        if (number % 256 == 1) {
            if (!attachProducer(producer)) return 1;
            usleep(200);
        }
        if (post(producer, {number, id, number, sealOf(id, number), 0, 0, 0x05245C0C})) {
            counted.logged.fetch_add(1);
        }
    }
}

// Reads as long as it lives.
int own(Counted& counted) {
    std::vector<uint64_t> records(kEntries * kSlotWords);
    for (;;) {
        uint64_t count = 0;
        const int error =
            readRecords(reinterpret_cast<unsigned char*>(records.data()), kEntries, count);
        if (error != 0) return error;
        uint64_t torn = 0;
        for (uint64_t i = 0; i < count; ++i) {
            const uint64_t* const words = &records[i * kSlotWords];
            if (words[3] != sealOf(words[1], words[2])) ++torn;
        }
        counted.torn.fetch_add(torn);
        counted.seen.fetch_add(count);
        usleep(2000);
    }
}

class Accounting : public FacilityTest {
  protected:
    void SetUp() override {
        FacilityTest::SetUp();
        if (IsSkipped()) return;
        void* const shared = mmap(nullptr, sizeof(Counted), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(shared, MAP_FAILED);
        counted = static_cast<Counted*>(shared);
    }
    void TearDown() override {
        for (pid_t& child : producers) stop(child);
        stop(owner);
    }

    void startProducer(size_t place) {
        const uint64_t id = nextId++;
        producers[place] = startChild([this, id] { return produce(id, *counted); });
    }
    void startOwner() {
        owner = startChild([this] { return own(*counted); });
    }
    static void stop(pid_t& child) {
        if (child == 0) return;
        kill(child, SIGKILL);
        EXPECT_EQ(waitFor(child), -1) << "it ended by itself";
        child = 0;
    }

    // Behind a killed owner: what it saw without having counted it is one batch at most, which the
    // facility has counted.
    void settleSeen() {
        const FacilityStatus now = statusNow();
        const uint64_t seenByFacility = now.posted - now.lost - now.pending;
        ASSERT_GE(seenByFacility, counted->seen);
        ASSERT_LE(seenByFacility, counted->seen + kEntries);
        if (seenByFacility != counted->seen) ++batchesUncounted;
        counted->seen = seenByFacility;
    }

    Counted* counted = nullptr;
    std::array<pid_t, kProducers> producers{};
    pid_t owner = 0;
    uint64_t nextId = 1;
    uint64_t batchesUncounted = 0;
};

TEST_F(Accounting, IsExactWhileProducersAndOwnersAreKilled) {
    const char* const wanted = std::getenv("SONAPROBE_ACCOUNTING_RECORDS");
    const uint64_t records = wanted != nullptr ? std::strtoull(wanted, nullptr, 0) : 2'000'000;
    // By an owner that is gone before the first one to be killed comes.
    ASSERT_EQ(inChild([] {
                  setUpWith(kEntries);
                  return HasFailure() ? 1 : 0;
              }),
              0);

    std::minstd_rand random(11);
    for (size_t i = 0; i < kProducers; ++i) startProducer(i);
    startOwner();
    uint64_t producersKilled = 0;
    uint64_t ownersKilled = 0;
    while (counted->logged < records && !HasFatalFailure()) {
        usleep(static_cast<useconds_t>(random() % 10'000));
        if (random() % 2 == 0) {
            const size_t victim = random() % kProducers;
            stop(producers[victim]);
            ++producersKilled;
            startProducer(victim);
        } else {
            stop(owner);
            ++ownersKilled;
            settleSeen();
            startOwner();
        }
    }
    for (pid_t& producer : producers) stop(producer);
    producersKilled += kProducers;
    stop(owner);
    settleSeen();

    // What is still pending is seen by the last owner.
    std::vector<uint64_t> rest(kEntries * kSlotWords);
    uint64_t count = 0;
    ASSERT_EQ(readRecords(reinterpret_cast<unsigned char*>(rest.data()), kEntries, count), 0);
    const FacilityStatus end = statusNow();
    EXPECT_EQ(end.pending, 0U);
    EXPECT_EQ(end.posted, counted->seen + count + end.lost);
    EXPECT_GE(end.posted, counted->logged);
    EXPECT_LE(end.posted, counted->logged + producersKilled);
    EXPECT_EQ(counted->torn, 0U);
    std::printf("posted %" PRIu64 " seen %" PRIu64 " lost %" PRIu64 "; killed: %" PRIu64
                " producers, %" PRIu64 " owners\n",
                end.posted, counted->seen + count, end.lost, producersKilled, ownersKilled);
}

}  // namespace
}  // namespace sonaprobe::standin
