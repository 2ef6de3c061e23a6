// lines --plain: the lines of sonaprobe -r, byte for byte.

#pragma once

#include <string>
#include <vector>

#include "analysis/selection.h"
#include "lines/line_options.h"
#include "scope/input.h"
#include "scope/options.h"
#include "scope/output.h"

namespace sonaprobe::scope {

struct PlainOptions {
    LineOptions line;
    bool noTime = false;
    bool kernelTime = false;
    bool all = false;
    std::string decodeFile;
    std::vector<std::string> without;
    std::vector<std::string> only;
};

// sonaprobe's options that shape its lines, under its names; each needs --plain.
void addPlainOptions(CLI::App& app, PlainOptions& options, CLI::Option* plain);

// Messages of sonaprobe, as --verbose makes it give them, are no lines. Finishes the output, and
// then tells what is wrong with the input. Throws a Failure.
void printPlainLines(Input& input, const Selection& selection, const TraceOptions& trace,
                     const PlainOptions& options, Output& out);

}  // namespace sonaprobe::scope
