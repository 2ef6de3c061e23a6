// Writes and reads the slots of a ring.

#include <chrono>
#include <cstring>
#include <sched.h>
#include <time.h>

#include "platform/standin/ring.h"

namespace sonaprobe::standin {
namespace {

using Clock = std::chrono::steady_clock;

constexpr Clock::duration kLongestWait = std::chrono::milliseconds(100);
constexpr int kYieldsBeforeSleep = 100;

constexpr uint64_t kSpread = 0xFF51AFD7ED558CCD;
constexpr std::array<uint64_t, kSlotWords> kKeys{
    0x9E3779B97F4A7C15, 0xBF58476D1CE4E5B9, 0x94D049BB133111EB, 0xD6E8FEB86659FD93,
    0xA0761D6478BD642F, 0xE7037ED1A0B428DB, 0x8EBC6AF09C88C6E3, 0x589965CC75374CC3,
};

// Mixes a word by the key of its place. Each is mixed on its own, so that the multiplications run
// side by side; the shift between them keeps differences in high bits from cancelling out.
uint64_t mixed(uint64_t word, uint64_t key) {
    const uint64_t spread = (word ^ key) * kSpread;
    return (spread ^ spread >> 32) * key;
}

// Takes the slot into a record if it holds the one of this ticket, whole.
bool takeSlot(uint64_t* slot, uint64_t ticket, unsigned char* record) {
    // A torn mixture fails the checksum, whatever order the words arrive in; the acquire only
    // spares a needless second look.
    const uint64_t checksum = std::atomic_ref(slot[7]).load(std::memory_order_acquire);
    RecordWords words;
    for (size_t i = 0; i < words.size(); i++) {
        words[i] = std::atomic_ref(slot[i]).load(std::memory_order_relaxed);
    }
    if (checksum != checksumOf(ticket, words)) return false;
    std::memcpy(record, words.data(), sizeof words);
    std::memcpy(record + sizeof words, &checksum, sizeof checksum);
    return true;
}

// The waiting of one read, for records whose tickets are drawn but not written yet.
class Patience {
  public:
    // Waits a moment; false when the time is used up.
    bool wait() {
        const auto now = Clock::now();
        if (waits_ == 0) deadline_ = now + kLongestWait;
        if (now >= deadline_) return false;
        if (waits_++ < kYieldsBeforeSleep) {
            sched_yield();
        } else {
            constexpr timespec kMoment{0, 50'000};
            nanosleep(&kMoment, nullptr);
        }
        return true;
    }

  private:
    int waits_ = 0;
    Clock::time_point deadline_;
};

}  // namespace

uint64_t checksumOf(uint64_t ticket, const RecordWords& words) {
    uint64_t sum = mixed(ticket, kKeys[7]);
    for (size_t i = 0; i < words.size(); i++) sum += mixed(words[i], kKeys[i]);
    return sum ^ sum >> 32;
}

void writeSlot(const Ring& ring, uint64_t ticket, const RecordWords& words) {
    uint64_t* slot = ring.slots + ticket % ring.entries * kSlotWords;
    for (size_t i = 0; i < words.size(); i++) {
        std::atomic_ref(slot[i]).store(words[i], std::memory_order_relaxed);
    }
    std::atomic_ref(slot[7]).store(checksumOf(ticket, words), std::memory_order_release);
}

uint64_t readRing(const Ring& ring, const std::atomic<uint64_t>& control, uint64_t end,
                  unsigned char* records, uint64_t room, Progress& progress) {
    uint64_t ticket = progress.position;
    if (end - ticket > ring.entries) ticket = end - ring.entries;
    const auto overtaken = [&] {
        const uint64_t now = control.load(std::memory_order_relaxed);
        return enabledIn(now) && ticketsIn(now) - ticket > ring.entries;
    };
    Patience patience;
    uint64_t taken = 0;
    uint64_t index = ticket % ring.entries;
    for (; ticket < end && taken < room; ticket++) {
        uint64_t* slot = ring.slots + index * kSlotWords;
        index = index + 1 == ring.entries ? 0 : index + 1;
        unsigned char* record = records + taken * kSlotBytes;
        bool whole = takeSlot(slot, ticket, record);
        while (!whole && !overtaken() && patience.wait()) whole = takeSlot(slot, ticket, record);
        if (whole) taken++;
    }
    progress.position = ticket;
    progress.seen += taken;
    return taken;
}

}  // namespace sonaprobe::standin
