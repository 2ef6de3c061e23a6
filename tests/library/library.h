// The C interface's objects, closed as their owners go.

#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "record/trace_record.h"
#include "sonaprobe/sonaprobe.h"

namespace sonaprobe::library {

template <auto kClose>
struct Closer {
    void operator()(auto* object) const { kClose(object); }
};

using Reader = std::unique_ptr<sonaprobe_reader, Closer<sonaprobe_close>>;
using Printer = std::unique_ptr<sonaprobe_printer, Closer<sonaprobe_close_printer>>;
using Names = std::unique_ptr<sonaprobe_names, Closer<sonaprobe_close_names>>;

constexpr TraceRecord slotOf(uint32_t debugid, uint64_t timestamp = 0) {
    TraceRecord slot{};
    slot.debugid = debugid;
    slot.timestamp = timestamp;
    return slot;
}

constexpr uint32_t kSomeStart = 0x05245C0D;

// Null where the memory is lacking.
inline Reader readerOf(std::span<const std::byte> bytes) {
    sonaprobe_reader* reader = nullptr;
    sonaprobe_open_memory(&reader, bytes.data(), bytes.size());
    return Reader(reader);
}

inline Printer newPrinter() {
    sonaprobe_printer* printer = nullptr;
    sonaprobe_open_printer(&printer);
    return Printer(printer);
}

// All lines of a reader's records.
inline std::string linesOf(sonaprobe_reader* reader, sonaprobe_printer* printer) {
    std::string lines;
    const sonaprobe_event* event = nullptr;
    while (sonaprobe_next(reader, &event) > 0) {
        const char* line = nullptr;
        size_t length = 0;
        if (sonaprobe_print(printer, event, &line, &length) > 0) {
            lines.append(line, length) += '\n';
        }
    }
    return lines;
}

}  // namespace sonaprobe::library
