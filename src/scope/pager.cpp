// Starts the pager.

#include "scope/pager.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "scope/memory_limit.h"

namespace sonaprobe::scope {

namespace {

// Where less is missing the text is shown all the same.
constexpr const char* kDefaultPager = "command -v less >/dev/null && exec less; exec cat";

// An empty one or "cat" means none.
std::string pagerCommand() {
    for (const char* variable : {"SONASCOPE_PAGER", "PAGER"}) {
        if (const char* const command = std::getenv(variable)) return command;
    }
    return kDefaultPager;
}

[[noreturn]] void becomePager(const char* command, const int (&ends)[2]) {
    liftMemoryLimit();
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    close(ends[1]);
    // One screen needs no pager, colours pass, long lines are not folded, the text stays on screen.
    setenv("LESS", "FRSX", 0);
    execl("/bin/sh", "sh", "-c", command, static_cast<char*>(nullptr));
    _exit(127);
}

}  // namespace

pid_t startPager() {
    const std::string command = pagerCommand();
    if (command.empty() || command == "cat") return -1;
    int ends[2];
    if (pipe(ends) != 0) return -1;
    const pid_t child = fork();
    if (child == 0) becomePager(command.c_str(), ends);
    if (child > 0) dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    return child;
}

}  // namespace sonaprobe::scope
