// Names of events.

#include "common/event_name.h"

#include <cstdio>

namespace sonaprobe::plugins {

std::string nameOf(const sonaprobe_event* event) {
    if (sonaprobe_event_outcome(event) != SONAPROBE_OUTCOME_UNKNOWN) {
        return std::string(sonaprobe_event_group(event)) + "::" + sonaprobe_event_method(event);
    }
    char name[16];
    std::snprintf(name, sizeof name, "code 0x%08X", sonaprobe_event_code(event));
    return name;
}

}  // namespace sonaprobe::plugins
