// The table of formats.

#include "scope/export/format.h"

namespace sonaprobe::scope {

namespace {

constexpr FormatEntry kFormats[] = {
    {"json", "one JSON object a line for each record, call or event", false, makeJson},
    {"csv", "the same as comma-separated values", false, makeCsv},
    {"sqlite", "a database of records, calls, values, events and findings", false, nullptr},
    {"chrome", "calls on a time line, for the tracing viewers of browsers", true, makeChrome, true},
    {"speedscope", "calls on a time line and as flame graphs, for speedscope", true,
     makeSpeedscope},
    {"folded", "a line for each path of calls, for flame graphs", true, makeFolded},
    {"callgrind", "who calls whom, for callgrind's viewers", true, makeCallgrind},
};

}  // namespace

std::span<const FormatEntry> formats() { return kFormats; }

}  // namespace sonaprobe::scope
