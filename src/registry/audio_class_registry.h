// The traced audio driver classes: id, four-character code, name.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace sonaprobe {

// What ResolveClassArgument answers for a text that names no class: beyond every class id.
constexpr uint32_t kUnresolvedClass = 51;

class AudioClassRegistry {
  public:
    struct Entry {
        uint32_t id;    // bits 10-15 of an audio trace code
        uint32_t code;  // first character in the highest byte
        const char* name;
    };

    // In ascending order of their ids, each id once.
    static std::span<const Entry> entries();

    // The list of --listclasses, on standard error.
    static void ListClasses();

    // The class id that a text names by code, number or name, or kUnresolvedClass. Numbers are
    // read as strtoull does in base 0 and not checked against the entries.
    static uint32_t ResolveClassArgument(const char* text);
};

}  // namespace sonaprobe
