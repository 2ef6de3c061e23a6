// Starts and awaits processes.

#include "scope/catch/answers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <spawn.h>
#include <sstream>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include "analysis/nearest.h"
#include "live/signals.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/status.h"

namespace sonaprobe::scope {

namespace {

// Those that read one file and write none.
constexpr std::array<std::string_view, 5> kReaders{"why", "info", "lines", "stats", "tree"};

constexpr const char* kThisProgram = "/proc/self/exe";

// The environment, with this program's pager switched off.
std::vector<char*> withoutPager(char* off) {
    std::vector<char*> variables{off};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!std::string_view(*variable).starts_with("SONASCOPE_PAGER=")) {
            variables.push_back(*variable);
        }
    }
    variables.push_back(nullptr);
    return variables;
}

}  // namespace

Answers::Answers(const std::string& command) {
    std::istringstream text(command);
    for (std::string word; text >> word;) words_.push_back(word);
    if (words_.empty()) return;
    if (std::ranges::find(kReaders, words_.front()) == kReaders.end()) {
        throw Failure{"--then: '" + escaped(words_.front()) + "' is none of why, info, lines, " +
                      "stats and tree" + nearestPhrase(words_.front(), kReaders)};
    }
}

Answers::~Answers() {
    for (const pid_t process : running_) kill(process, SIGTERM);
    for (const pid_t process : running_) waitpid(process, nullptr, 0);
}

void Answers::begin(const std::string& path, bool beside) {
    if (words_.empty()) return;
    // A path that looks like an option is none.
    std::string file = path.starts_with('-') ? "./" + path : path;
    std::string name = "sonascope";
    std::vector<char*> arguments{name.data()};
    for (std::string& word : words_) arguments.push_back(word.data());
    arguments.push_back(file.data());
    arguments.push_back(nullptr);

    // What this program ignores, it is to take as others do.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t usual;
    sigemptyset(&usual);
    for (const int signal : {SIGPIPE, SIGXFSZ}) sigaddset(&usual, signal);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::string off = "SONASCOPE_PAGER=";
    const std::vector<char*> variables = withoutPager(off.data());
    pid_t process = 0;
    const int error = posix_spawn(&process, kThisProgram, nullptr, &attributes, arguments.data(),
                                  beside ? variables.data() : environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) throw Failure{"could not start " + words_.front() + ": " + strerror(error)};
    running_.push_back(process);
}

bool Answers::finish() {
    bool given = true;
    while (!running_.empty()) {
        int status = 0;
        const pid_t ended = waitpid(running_.front(), &status, 0);
        if (ended < 0 && errno == EINTR) {
            if (signals::noted != 0) kill(running_.front(), signals::noted);
            continue;
        }
        running_.erase(running_.begin());
        given &= ended > 0 && WIFEXITED(status) &&
                 WEXITSTATUS(status) != static_cast<int>(Status::trouble);
    }
    return given;
}

}  // namespace sonaprobe::scope
