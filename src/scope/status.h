// How the program ends.

#pragma once

namespace sonaprobe::scope {

// As version control and diff do it.
enum class Status : int {
    done = 0,
    findings = 1,  // what was asked for is answered, and something was found: see each command
    trouble = 2,   // input unreadable, output not written, command line not understood
};

}  // namespace sonaprobe::scope
