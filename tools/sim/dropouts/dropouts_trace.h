// A trace with dropouts whose causes are known: what is asked for, the records, the truth.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "record/trace_record.h"
#include "sim/dropouts/cause.h"

namespace sonaprobe::sim {

struct DropoutsPlan {
    const Level* level = nullptr;
    std::vector<Cause> causes{};  // in turn; not empty
    uint64_t count = 0;           // dropouts planted; those that they drag along come on top
    uint64_t seed = 0;
};

struct DropoutsTrace {
    std::vector<TraceRecord> slots;  // as the file has them, the divisor first
    std::string truth;               // JSON; docs/schema/dropouts-truth.schema.json
};

DropoutsTrace makeDropoutsTrace(const DropoutsPlan& plan);

}  // namespace sonaprobe::sim
