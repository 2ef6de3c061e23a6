// The scenarios by their names.

#pragma once

#include <span>
#include <string_view>

#include "sim/story.h"

namespace sonaprobe::sim {

struct Scenario {
    const char* name;
    const char* summary;
    std::span<const Story* const> stories;  // told side by side
};

std::span<const Scenario> scenarios();

// Null, and said, where there is none of that name.
const Scenario* findScenario(std::string_view name);

}  // namespace sonaprobe::sim
