// The database of a trace.

#pragma once

#include <memory>
#include <string>

#include "scope/export/format.h"

namespace sonaprobe::scope {

// Writes into the empty file at `path`, which messages call `name`. The trace at `trace` is read
// for its findings first; it must be one that can be read again.
std::unique_ptr<Format> makeSqlite(const FormatOptions& options, const std::string& trace,
                                   const std::string& path, const std::string& name);

}  // namespace sonaprobe::scope
