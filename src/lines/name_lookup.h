// Where the names of codes without decoder come from, which only the caller knows.

#pragma once

#include <cstdint>

namespace sonaprobe {

// Without a function no names are asked for. `find` gives the name of a code, which holds until the
// next call and has at most kMaxCodeName characters, or null if it has none. It is asked before a
// line is begun, so it may wait, and print what there is before that.
struct NameLookup {
    const char* (*find)(const void* context, uint32_t code) = nullptr;
    const void* context = nullptr;

    explicit operator bool() const { return find != nullptr; }
    const char* operator()(uint32_t code) const { return find(context, code); }
};

constexpr unsigned kMaxCodeName = 63;

}  // namespace sonaprobe
