// The program's one indentation depth.

#include "lines/indentation.h"

#include <cstdint>
#include <limits>

#include "lines/output_line.h"

namespace sonaprobe {

namespace {

int32_t depth = 0;

}  // namespace

void indentPad() { outputLine.blanks(static_cast<uint64_t>(depth)); }

void indentIn() {
    indentPad();
    if (depth < std::numeric_limits<int32_t>::max()) ++depth;
}

void indentOut() {
    if (depth == 0) return;
    --depth;
    indentPad();
}

void resetIndentation() { depth = 0; }

}  // namespace sonaprobe
