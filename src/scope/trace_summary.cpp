// The same in every command's words.

#include "scope/trace_summary.h"

#include "scope/failure.h"

namespace sonaprobe::scope {

void TraceSummary::addTo(Json& document, const TraceClock& clock) const {
    document["records"] = records_;
    document["span_ns"] = span();
    document["ticks_per_microsecond"] = clock.ticksPerMicrosecond();
    document["assumed_divisor"] = clock.assumedDivisor();
    document["steps_back"] = clock.stepsBack();
    document["disordered"] = clock.disordered();
}

void TraceSummary::warnOfClock(const std::string& file, const TraceClock& clock) {
    if (!clock.assumedDivisor()) return;
    warn(file + ": no divisor before the first record; 1000 ticks a microsecond are assumed");
}

}  // namespace sonaprobe::scope
