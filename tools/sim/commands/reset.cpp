// sonaprobe-sim reset: the facility as after boot.

#include "platform/standin/facility.h"
#include "sim/arguments.h"
#include "sim/messages.h"

namespace sonaprobe::sim {

int runReset(Arguments arguments) {
    if (!readArguments(arguments, {}, {})) return 1;
    const int error = standin::resetFacility();
    return error == 0 ? 0 : facilityFailure("reset the facility", error);
}

}  // namespace sonaprobe::sim
