// A set of options, as the reference reads it and as the printer takes it.

#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "lines/line_printer.h"
#include "random.h"

namespace sonaprobe::differential {

struct OptionSet {
    bool verbose = false;
    bool kernelTime = false;
    bool localTime = true;
    bool thread = true;
    bool group = true;
    bool method = true;
    bool pointer = true;
    bool indent = true;
    bool codes = false;
    bool cpu = false;
    bool basic = false;
    bool separator = true;
    bool hal = false;
    bool historic = false;
    bool all = false;
    bool decode = false;
    std::set<uint32_t> filterOut;
    std::set<uint32_t> filterAllExcept;
    double divisor = 1000.0;

    std::string text() const;  // for messages
};

OptionSet randomOptions(Random& random);

// A printer of these options.
LinePrinter printerOf(const OptionSet& options, OutputLine& line);

}  // namespace sonaprobe::differential
