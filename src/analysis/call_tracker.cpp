// The tracker for sinks whose kind is not known when compiling.

#include "analysis/call_tracker.h"

namespace sonaprobe {

template class CallTrackerOf<CallSink>;

}  // namespace sonaprobe
