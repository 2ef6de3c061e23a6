// Names of trace codes from the code-name file of --decode.
//
// The file has one code a line: a number, blanks or tabs, the name. What counts is a plain scan of
// the file from its start for every lookup, by pieces of 63 characters: a longer line is several
// lines, a line without number has the code 0, and each blank within a name costs a character at
// its front.

#pragma once

#include <cstddef>
#include <cstdint>

namespace sonaprobe {

constexpr size_t kCodeNameRoom = 64;

// The name of `code`, in `destination`, or null if the file has none. Without an open file it says
// so on standard error and returns the destination as it was, so callers pass it cleared. To be
// asked for before a line is begun: it may have to wait, and prints what there is before that.
const char* lookupCodeName(uint32_t code, char (&destination)[kCodeNameRoom]);

}  // namespace sonaprobe
