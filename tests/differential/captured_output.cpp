// What the program prints, caught on its way to standard output.

#include "captured_output.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace sonaprobe::differential {

namespace {

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::abort();
}

}  // namespace

CapturedOutput::CapturedOutput()
    : file_(memfd_create("output", MFD_CLOEXEC)), standardOutput_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    if (file_ < 0 || standardOutput_ < 0 || dup2(file_, STDOUT_FILENO) < 0) giveUp("capture");
}

CapturedOutput::~CapturedOutput() {
    if (standardOutput_ >= 0) finish();
    close(file_);
}

void CapturedOutput::endPart() {
    std::fflush(stdout);
    ends_.push_back(static_cast<size_t>(lseek(file_, 0, SEEK_CUR)));
}

std::vector<std::string> CapturedOutput::finish() {
    std::fflush(stdout);
    dup2(standardOutput_, STDOUT_FILENO);
    close(standardOutput_);
    standardOutput_ = -1;

    std::vector<std::string> parts;
    size_t begin = 0;
    for (const size_t end : ends_) {
        std::string& part = parts.emplace_back(end - begin, '\0');
        const ssize_t got = pread(file_, part.data(), part.size(), static_cast<off_t>(begin));
        if (got < 0 || static_cast<size_t>(got) != part.size()) giveUp("read what was printed");
        begin = end;
    }
    return parts;
}

std::string withoutClock(std::string line) {
    constexpr std::string_view kMask = "HH:MM:SS";
    bool isClock = line.size() >= kMask.size();
    for (size_t i = 0; isClock && i < kMask.size(); ++i) {
        const auto c = static_cast<unsigned char>(line[i]);
        isClock = kMask[i] == ':' ? c == ':' : std::isdigit(c) != 0;
    }
    if (isClock) line.replace(0, kMask.size(), kMask);
    return line;
}

}  // namespace sonaprobe::differential
