// A trace that is read twice, though it may come through a pipe.

#pragma once

#include <string>

namespace sonaprobe::scope {

// A path that gives the same bytes each time it is opened while the program runs: the path itself,
// or, of a pipe, that of a copy without a name in the folder for temporary files. Throws a Failure.
std::string repeatablePath(const std::string& path);

}  // namespace sonaprobe::scope
