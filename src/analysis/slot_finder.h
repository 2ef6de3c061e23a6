// Finds the slots of a raw file that may be damaged: bytes in between, bytes gone, garbage, the
// byte order of another machine. One pass over the bytes, in constant memory.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "analysis/plausibility.h"
#include "record/trace_record.h"

namespace sonaprobe {

// One thing in the file, in the order of the file and without gaps.
struct Found {
    enum class What : uint8_t { record, divisor, invalid, empty, damage, cutSlot };

    What what;
    ByteOrder order;   // of a slot
    uint64_t offset;   // bytes from the file's begin
    uint64_t length;   // bytes: 64 of a slot, 1 to 63 of a cut one, any number of damage
    TraceRecord slot;  // in this machine's byte order; of a slot alone

    bool isSlot() const { return what != What::damage && what != What::cutSlot; }
    uint64_t slotNumber() const { return offset / sizeof(TraceRecord); }
};

// Records that follow each other in the file.
struct RecordRun {
    uint64_t firstSlot;  // number
    std::span<const TraceRecord> records;
    bool inOrder;  // each as late as the one before or later
};

// Slots are taken as they follow each other, 64 bytes apart. Where 64 bytes are no slot, the next
// place is looked for from which on they are, byte by byte, in both byte orders; what lies between
// is damage. A file in which nothing is damaged gives all its slots as they are, whatever they say.
class SlotFinder {
  public:
    // Where the file's next bytes go, so many at most; took() says how many came, end() that there
    // are no more.
    std::span<std::byte> room(size_t bytes);
    void took(size_t bytes) { end_ += bytes; }
    void end() { ended_ = true; }

    // The same of bytes that stand elsewhere.
    void feed(std::span<const std::byte> bytes);

    // The next thing in the file; nothing when more bytes are needed, and for ever after the last.
    std::optional<Found> next();

    // Instead of next(), which has to look where this gives none: records that follow here
    // without any doubt, in place; where there are many, the first of them. They hold until room()
    // or feed().
    RecordRun plainRecords();

    // After the end: whether the file is a trace, rather than something else in which by chance a
    // few bytes look like slots.
    bool isTrace() const;

  private:
    // Where slots may begin, and how to read them.
    struct Place {
        size_t at;  // of the buffer
        ByteOrder order;
    };

    size_t left() const { return end_ - at_; }
    TraceRecord slotAtPlace(Place place) const;
    bool isFar(const TraceRecord& slot) const;
    unsigned doubtsHere(const TraceRecord& slot) const;
    bool isTorn(const TraceRecord& first, const TraceRecord& second) const;
    bool slotsBeginAt(Place place) const;
    bool familiarSlotsBeginAt(Place place) const;
    bool unknownSlotsBeginAt(Place place) const;
    std::optional<Place> otherBegin() const;

    std::optional<Found> follow();
    std::optional<Found> search();
    std::optional<Found> goOnAt(Place place);
    Found takeSlot(const TraceRecord& slot);
    void takeTime(uint64_t timestamp);
    Found takeRest(Found::What what);

    Plausibility plausibility_;
    std::vector<std::byte> buffer_;
    size_t end_ = 0;            // of the buffer: bytes that have come stand before it
    size_t at_ = 0;             // of the buffer: what has not been told begins here
    uint64_t bytesBefore_ = 0;  // of the file, before the buffer
    bool ended_ = false;

    ByteOrder order_ = ByteOrder::own;
    std::optional<uint64_t> damageBegin_;  // in the file, while slots are searched for
    bool isBegin_ = false;                 // at_ is where a search has found slots
    bool afterEmpty_ = false;              // the slot before at_ was empty

    std::optional<uint64_t> last_;  // time stamp of the last record
    uint64_t latest_ = 0;           // time stamp since the clock last went back far
    uint64_t disorder_ = 0;         // ticks that a record came late by, at most
    uint64_t slots_ = 0;            // but empty ones
    uint64_t certainSlots_ = 0;     // that no other file has
};

}  // namespace sonaprobe
