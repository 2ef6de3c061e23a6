// What stands behind the opaque types of the C interface.

#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <new>
#include <string_view>

#include "capi/slots.h"
#include "events/event.h"
#include "events/log_text.h"
#include "sonaprobe/sonaprobe.h"

// A text that is handed out: it ends with a zero byte, and stays where it is.
template <size_t kLength>
struct KeptText {
    char characters[kLength + 1];

    const char* keep(std::string_view text) {
        text = text.substr(0, kLength);
        std::copy_n(text.data(), text.size(), characters);
        characters[text.size()] = '\0';
        return characters;
    }
};

// Names have no limit of their own; a test sees to it that all of them fit.
using KeptName = KeptText<127>;

struct sonaprobe_value {
    const sonaprobe_event* event;
    const sonaprobe::Piece* piece;
    mutable KeptName name;
    mutable char text[sonaprobe::kLogTextRoom];
};

// Names, values and texts are written when they are asked for, which changes nothing that can be
// seen.
struct sonaprobe_event {
    sonaprobe::TraceRecord record{};
    sonaprobe::Event meaning{};
    double ticksPerMicrosecond = 0;
    uint64_t slot = 0;
    mutable KeptName group{};
    mutable KeptName method{};
    mutable char text[sonaprobe::kLogTextRoom]{};
    mutable sonaprobe_value values[sonaprobe::kMaxPieces]{};
};

struct sonaprobe_reader {
    sonaprobe::Slots slots;
    double ticksPerMicrosecond = 1000.0;
    uint64_t slotsTaken = 0;
    uint64_t invalidSlots = 0;
    sonaprobe_event event{};
};

namespace sonaprobe {

// Opens a file for reading: its descriptor, or a negative errno value.
int openInput(const char* path);

// Does what may want for memory: its answer, or -ENOMEM.
template <typename Act>
int orNoMemory(Act act) {
    try {
        return act();
    } catch (const std::bad_alloc&) {
        return -ENOMEM;
    }
}

}  // namespace sonaprobe
