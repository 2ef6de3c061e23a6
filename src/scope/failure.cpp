// Messages on standard error.

#include "scope/failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "scope/progress.h"

namespace sonaprobe::scope {

Failure systemFailure(const std::string& what) { return {what + ": " + std::strerror(errno)}; }

void warn(const std::string& message) {
    Progress::clear();
    std::fprintf(stderr, "sonascope: %s\n", message.c_str());
}

}  // namespace sonaprobe::scope
