// What is wrong with a trace, and why its sound broke off, as rows of its database.

#pragma once

#include "scope/export/sqlite_database.h"
#include "scope/options.h"

namespace sonaprobe::scope {

// Reads the trace for it.
void putFindings(Database& database, const TraceOptions& trace);

}  // namespace sonaprobe::scope
