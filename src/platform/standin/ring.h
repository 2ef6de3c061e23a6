// The ring file of one set-up and the protocol of its slots: written without a lock by any number
// of producers, read while they write.
//
// Slot `ticket mod entries` takes the record of a ticket. Its last word is a checksum of the ticket
// and the other seven words, so a record is seen whole or not at all, no matter which of its
// writers was killed, stopped or overtaken half-way.

#pragma once

#include <cstdint>
#include <sys/types.h>

#include "platform/standin/layout.h"

namespace sonaprobe::standin {

// A mapped ring. Not mapped: entries is 0.
struct Ring {
    void* base = nullptr;
    uint64_t* slots = nullptr;
    uint32_t entries = 0;
    uint16_t number = 0;
    dev_t device = 0;
    ino_t inode = 0;
};

// Makes the ring file of a set-up and reserves its memory. Where there is less room than wanted:
// as many slots as fit into half of what is free. Sets entries; returns 0, or errno with no file
// left behind: ENOMEM when that is fewer than kFewestEntries and fewer than wanted.
constexpr uint32_t kFewestEntries = 1024;
int createRing(int folder, uint16_t number, uint32_t wanted, uint32_t& entries);

// Unlinks the ring file. Mappings of it stay valid.
void removeRing(int folder);

// Maps the ring file of a set-up in place of what the ring held before. Returns 0, or errno:
// ENOENT when there is none of this number, EPERM when it is not to be trusted.
int mapRing(int folder, uint16_t number, Ring& ring);
void unmapRing(Ring& ring);

// What stands by the ring's name: the file mapped, that file without all its bytes, or another one
// or none.
enum class RingFile { inPlace, cutShort, another };
RingFile fileOf(int folder, const Ring& ring);

uint64_t checksumOf(uint64_t ticket, const RecordWords& words);

void writeSlot(const Ring& ring, uint64_t ticket, const RecordWords& words);

// Reads the records of the tickets from progress.position up to end into records, at most room of
// them, 64 bytes each, oldest first, and moves progress on. Records overwritten, or unwritten
// after 100 ms in all, are passed over as lost. Returns how many were read.
uint64_t readRing(const Ring& ring, const std::atomic<uint64_t>& control, uint64_t end,
                  unsigned char* records, uint64_t room, Progress& progress);

}  // namespace sonaprobe::standin
