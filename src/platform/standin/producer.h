// The drivers' side of the facility: posting records without ever waiting or taking a lock.

#pragma once

#include "platform/standin/layout.h"
#include "platform/standin/ring.h"

namespace sonaprobe::standin {

// One thread's access. Any number may exist; each maps the ring for itself.
struct Producer {
    State* state = nullptr;
    Ring ring;
    platform::TraceInterest interest{};
    uint64_t interestVersion = 0;
};

// Finds the facility, or checks that it and its ring are still those found before; some
// microseconds, so worth a call now and then. False with errno as attach() of attachment.h has it.
bool attachProducer(Producer& producer);
void detachProducer(Producer& producer);

// Posts a record as it stands, if tracing is enabled and its debug id passes the filter. Returns
// whether it was logged. An attached producer only.
bool post(Producer& producer, const RecordWords& words);

// The audio drivers' debug flags. An attached producer only.
uint32_t audioDebugFlags(const Producer& producer);

}  // namespace sonaprobe::standin
