// The same in every command's words.

#include "scope/trace_summary.h"

namespace sonaprobe::scope {

void TraceSummary::addTo(Json& document, const TraceClock& clock) const {
    document["records"] = records_;
    document["span_ns"] = span();
    document["ticks_per_microsecond"] = clock.ticksPerMicrosecond();
    document["assumed_divisor"] = clock.assumedDivisor();
    document["steps_back"] = clock.stepsBack();
    document["disordered"] = clock.disordered();
}

}  // namespace sonaprobe::scope
