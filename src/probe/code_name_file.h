// Names of trace codes from the code-name file of --decode.

#pragma once

#include "lines/name_lookup.h"

namespace sonaprobe {

// Looks names up in Settings::decodeFile where --decode was given. Without an open file each lookup
// says so on standard error, and every code's name is empty.
NameLookup codeNameLookup();

}  // namespace sonaprobe
