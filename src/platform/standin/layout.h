// The shared memory of the stand-in trace facility: what stands in its files, and the control word
// by which its users meet the producers. Little-endian hosts; every process maps the same bytes.

#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/kernel_abi.h"

namespace sonaprobe::standin {

static_assert(std::endian::native == std::endian::little);
static_assert(std::atomic<uint64_t>::is_always_lock_free);

constexpr const char* kFolder = "/dev/shm/sonaprobe";
constexpr const char* kStatePath = "/dev/shm/sonaprobe/state";
constexpr const char* kRingPath = "/dev/shm/sonaprobe/ring";

// The first bytes of each file. A changed layout needs a changed magic.
constexpr uint64_t fileMagic(const char (&letters)[9]) {
    uint64_t magic = 0;
    for (int i = 7; i >= 0; i--) magic = magic << 8 | static_cast<unsigned char>(letters[i]);
    return magic;
}
constexpr uint64_t kStateMagic = fileMagic("sonaSta1");
constexpr uint64_t kRingMagic = fileMagic("sonaRng1");

// A record as the facility sees it: 0 time stamp, 1-5 arguments, 6 the debug id in the low and the
// CPU in the high half, 7 reserved (in a slot: the checksum).
constexpr size_t kSlotWords = 8;
constexpr size_t kSlotBytes = kSlotWords * sizeof(uint64_t);
using RecordWords = std::array<uint64_t, kSlotWords - 1>;

constexpr uint32_t debugidOf(const RecordWords& words) { return static_cast<uint32_t>(words[6]); }

// The control word: bits 0-46 tickets drawn, bit 47 tracing enabled, bits 48-63 the set-up number.
// While tracing is disabled its ticket bits mean nothing; the count stands in State::cut.
constexpr uint64_t kEnabledBit = uint64_t{1} << 47;
constexpr uint64_t kTicketMask = kEnabledBit - 1;
constexpr int kNumberShift = 48;

constexpr bool enabledIn(uint64_t control) { return (control & kEnabledBit) != 0; }
constexpr uint64_t ticketsIn(uint64_t control) { return control & kTicketMask; }
constexpr uint16_t numberIn(uint64_t control) {
    return static_cast<uint16_t>(control >> kNumberShift);
}
constexpr uint64_t controlWord(uint16_t number, bool enabled, uint64_t tickets) {
    return (uint64_t{number} << kNumberShift) | (enabled ? kEnabledBit : 0) | tickets;
}

// A value of some words that is replaced whole: who reads it without the lock, or finds it after
// its writer was killed, gets the former or the new one and never a mixture.
template <size_t kWords>
struct Published {
    using Value = std::array<uint64_t, kWords>;

    std::atomic<uint64_t> version;
    std::array<std::array<std::atomic<uint64_t>, kWords>, 2> copies;

    // One writer at a time.
    void publish(const Value& value) {
        const uint64_t next = version.load(std::memory_order_relaxed) + 1;
        auto& copy = copies[next & 1];
        for (size_t i = 0; i < kWords; i++) copy[i].store(value[i], std::memory_order_release);
        version.store(next, std::memory_order_release);
    }

    // Sets versionRead, by which a reader can tell that its copy is still the latest.
    Value read(uint64_t& versionRead) const {
        for (;;) {
            Value value;
            versionRead = version.load(std::memory_order_acquire);
            const auto& copy = copies[versionRead & 1];
            for (size_t i = 0; i < kWords; i++) value[i] = copy[i].load(std::memory_order_acquire);
            if (version.load(std::memory_order_relaxed) == versionRead) return value;
        }
    }
    Value read() const {
        uint64_t ignored;
        return read(ignored);
    }
};

// The words of a TraceInterest, as State::interest holds them.
using InterestWords = Published<5>::Value;

constexpr InterestWords wordsOf(const platform::TraceInterest& interest) {
    return {interest.type, interest.value1, interest.value2, interest.value3, interest.value4};
}
constexpr platform::TraceInterest interestOf(const InterestWords& words) {
    const auto word = [&](size_t i) { return static_cast<uint32_t>(words[i]); };
    return {word(0), word(1), word(2), word(3), word(4)};
}

// Passes every debug id, as after boot.
constexpr platform::TraceInterest kEverything{platform::kInterestRange, 0, 0xFFFFFFFF, 0, 0};

// The operations that can be made to fail. audio stands for both calls of "debug.Audio".
enum class FailurePoint : uint32_t {
    enable,
    setBuf,
    getBuf,
    setup,
    remove,
    setReg,
    readTr,
    audio,
    audioGet,
    audioSet,
};
constexpr size_t kFailurePoints = 10;

struct ArmedFailure {
    uint32_t error;  // errno to fail with
    uint32_t after;  // calls that still pass
    uint32_t times;  // calls that then fail; 0: not armed
};

// How far the records of the present set-up were read: every ticket below position was either
// seen by a reader or lost. The words of State::progress.
struct Progress {
    uint64_t position;
    uint64_t seen;
};

// The state file. It is made whole under another name, and neither resized nor replaced later.
// What is not atomic is touched only under the operation lock.
struct State {
    uint64_t magic;
    uint64_t size;

    alignas(64) std::atomic<uint64_t> control;

    // What producers look at for each record, on cache lines of their own.
    alignas(64) Published<5> interest;
    std::atomic<uint32_t> audioFlags;

    alignas(64) std::atomic<uint32_t> changing;  // 1 while an operation is half done
    std::atomic<uint32_t> entries;               // slots of the ring; 0: not set up
    std::atomic<uint32_t> requestedEntries;      // by KERN_KDSETBUF; 0: none
    std::atomic<uint64_t> cut;                   // tickets drawn, while tracing is disabled
    Published<2> progress;
    std::array<ArmedFailure, kFailurePoints> failures;
};
static_assert(sizeof(State) <= 4096);

// The start of a ring file; the slots follow at kRingHeaderBytes.
struct RingHeader {
    uint64_t magic;
    uint64_t number;   // set-up number of the control word
    uint64_t entries;  // slots
};
constexpr size_t kRingHeaderBytes = 4096;

}  // namespace sonaprobe::standin
