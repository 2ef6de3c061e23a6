// sonaprobe-sim scenarios: lists the scenarios, a line each.

#include "sim/scenarios.h"

#include <cstdio>

#include "sim/arguments.h"
#include "sim/command.h"

namespace sonaprobe::sim {

int runScenarios(Arguments arguments) {
    if (!readArguments(arguments, {}, {})) return 1;
    for (const Scenario& scenario : scenarios()) {
        std::printf("%-12s %s\n", scenario.name, scenario.summary);
    }
    return 0;
}

}  // namespace sonaprobe::sim
