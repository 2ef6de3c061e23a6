// What is wrong with a trace, and why its sound broke off, as rows of its database.

#pragma once

#include <string>

#include "scope/export/sqlite_database.h"

namespace sonaprobe::scope {

// Reads the trace for it.
void putFindings(Database& database, const std::string& trace);

}  // namespace sonaprobe::scope
