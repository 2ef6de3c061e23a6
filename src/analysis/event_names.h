// What tables call an event, whose identity is its code.

#pragma once

#include <cstdint>
#include <string_view>

namespace sonaprobe {

struct EventName {
    std::string_view full;  // "Group::method"; empty where the code has no decoder
    std::string_view group;
    std::string_view method;
    // The name belongs to more than one code, or some texts of the event have another: only name
    // and code together say which event it is.
    bool ambiguous = false;
};

EventName nameOf(uint32_t code);

// The driver of an event, its group; the same text for all that have no decoder.
std::string_view driverOf(uint32_t code);

}  // namespace sonaprobe
