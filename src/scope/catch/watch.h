// Watches the live trace, and keeps what came before and after an event.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "analysis/trace_clock.h"
#include "scope/status.h"

namespace sonaprobe::scope {

struct WatchOptions {
    std::vector<std::string> on;  // as Trigger takes them
    Nanoseconds keep = 0;         // before an event
    Nanoseconds after = 0;
    uint64_t memory = uint64_t{1} << 30;  // bytes for records
    uint64_t count = 1;                   // of events
    std::string path;                     // of the file; numbered where there may be several
    bool saveOnEnd = false;
    std::string then;             // as Answers takes it
    uint32_t buffer = 5'000'000;  // records of the kernel's buffer
    bool startDrivers = true;
    uint32_t firstCode = 0;  // of the debug ids that are recorded
    uint32_t lastCode = 0xFFFFFFFF;
};

// The name of the n-th file: "trace.raw", or "trace-2.raw" where there may be several.
std::string numberedPath(const std::string& path, uint64_t number, uint64_t count);

// Until all events are caught, or a signal. Status::findings where nothing was written. Throws a
// Failure. Whatever happens, the trace facility is given back.
Status watch(const WatchOptions& options);

}  // namespace sonaprobe::scope
