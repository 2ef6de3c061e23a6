// The C interface: reading a raw file.

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "capi/handles.h"

using namespace sonaprobe;

int sonaprobe::openInput(const char* path) {
    for (;;) {
        const int file = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
        if (file >= 0) return file;
        if (errno != EINTR) return -errno;
    }
}

const char* sonaprobe_version() { return SONAPROBE_VERSION; }

int sonaprobe_open_file(sonaprobe_reader** reader, const char* path) {
    const int file = openInput(path);
    if (file < 0) return file;
    const int opened = orNoMemory([&] {
        *reader = new sonaprobe_reader{.slots = Slots(file, Slots::Closing::withSlots)};
        return 0;
    });
    if (opened < 0) ::close(file);
    return opened;
}

int sonaprobe_open_descriptor(sonaprobe_reader** reader, int descriptor) {
    return orNoMemory([&] {
        *reader = new sonaprobe_reader{.slots = Slots(descriptor, Slots::Closing::byCaller)};
        return 0;
    });
}

int sonaprobe_open_memory(sonaprobe_reader** reader, const void* bytes, size_t length) {
    return orNoMemory([&] {
        *reader = new sonaprobe_reader{
            .slots = Slots(std::span(static_cast<const std::byte*>(bytes), length))};
        return 0;
    });
}

void sonaprobe_close(sonaprobe_reader* reader) { delete reader; }

int sonaprobe_next(sonaprobe_reader* reader, const sonaprobe_event** event) {
    sonaprobe_event& next = reader->event;
    for (;;) {
        TraceRecord slot{};
        const int taken = reader->slots.next(slot);
        if (taken <= 0) return taken;
        const uint64_t number = reader->slotsTaken++;
        if (slot.debugid == kDivisorMarker) {
            reader->ticksPerMicrosecond = static_cast<double>(slot.timestamp);
        } else if (slot.debugid == kInvalidMarker) {
            ++reader->invalidSlots;
        } else {
            next.record = slot;
            next.slot = number;
            next.ticksPerMicrosecond = reader->ticksPerMicrosecond;
            next.meaning = decode(next.record);
            *event = &next;
            return taken;
        }
    }
}

const sonaprobe_event* sonaprobe_event_again(sonaprobe_reader* reader,
                                             const sonaprobe_record* record) {
    sonaprobe_event& event = reader->event;
    std::memcpy(&event.record, record->words, sizeof event.record);
    event.slot = record->slot;
    event.ticksPerMicrosecond = record->ticks_per_microsecond;
    event.meaning = decode(event.record);
    return &event;
}

uint64_t sonaprobe_invalid_slots(const sonaprobe_reader* reader) { return reader->invalidSlots; }

size_t sonaprobe_cut_bytes(const sonaprobe_reader* reader) { return reader->slots.cutBytes(); }

void sonaprobe_set_ticks_per_microsecond(sonaprobe_reader* reader, double ticks) {
    reader->ticksPerMicrosecond = ticks;
}
