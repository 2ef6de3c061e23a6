// What exports are given: a trace, and the name of one of its codes.
//
// Of the input: the length of a name, the name, then slots, before which a divisor is put.

#pragma once

#include <string_view>
#include <vector>

#include "fuzz.h"
#include "input_file.h"
#include "lines/code_names.h"
#include "record/trace_record.h"
#include "scope/options.h"

namespace sonaprobe::fuzz {

// Makes the name that comes next that of the code 0x01400004, the only one.
inline void takeName(Input& input, CodeNames& names) {
    constexpr std::string_view kNamedCode = "0x01400004 ";
    const std::span<const uint8_t> name = input.bytes(input.number<uint8_t>());
    names.clear();
    names.take(kNamedCode.data(), kNamedCode.size());
    names.take(reinterpret_cast<const char*>(name.data()), name.size());
    names.endFile();
}

// The rest of the input; until the next one.
inline scope::TraceOptions takeTrace(Input& input) {
    static std::vector<TraceRecord> slots;
    const std::span<const uint8_t> bytes = input.rest();
    constexpr size_t kMostSlots = 200;
    slots.assign(1 + std::min(bytes.size() / sizeof(TraceRecord), kMostSlots), {});
    slots[0].timestamp = 24;
    slots[0].debugid = kDivisorMarker;
    if (slots.size() > 1) {
        std::memcpy(&slots[1], bytes.data(), (slots.size() - 1) * sizeof(TraceRecord));
    }
    const auto file = std::as_bytes(std::span(slots));
    scope::TraceOptions trace;
    trace.path = inputFile({reinterpret_cast<const uint8_t*>(file.data()), file.size()});
    return trace;
}

}  // namespace sonaprobe::fuzz
