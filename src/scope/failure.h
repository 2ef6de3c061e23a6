// What ends a command early: thrown where it is found out, said by main.

#pragma once

#include <string>

#include "scope/status.h"

namespace sonaprobe::scope {

// The message names the file, the slot where it matters, and what to do; what it has of a file or
// of the command line is escaped. An empty one is silent: a reader that has closed its pipe needs
// no message.
struct Failure {
    std::string message;
    Status status = Status::trouble;
};

// "could not open FILE: No such file or directory", with the errno of a call that just failed.
Failure systemFailure(const std::string& what);

// Something that is worth a line on standard error and stops nothing.
void warn(const std::string& message);

}  // namespace sonaprobe::scope
