// Writes a command's output, through the pager where a person reads.

#include "scope/output.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "record/trace_record.h"
#include "scope/failure.h"
#include "scope/pager.h"
#include "scope/progress.h"

namespace sonaprobe::scope {

namespace {

constexpr unsigned kDefaultWidth = 80;

unsigned terminalWidth() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    const char* const columns = std::getenv("COLUMNS");
    const int given = columns != nullptr ? std::atoi(columns) : 0;
    return given > 0 ? static_cast<unsigned>(given) : kDefaultWidth;
}

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool wantsColor(ColorWhen when, bool terminal) {
    if (when != ColorWhen::automatic) return when == ColorWhen::always;
    const char* const kind = std::getenv("TERM");
    return terminal && !isSet("NO_COLOR") && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

}  // namespace

Output::Output(const OutputOptions& options)
    : json_(options.json),
      terminal_(isatty(STDOUT_FILENO) != 0),
      colored_(wantsColor(options.color, terminal_) && !json_),
      paged_(terminal_ && !options.noPager),
      width_(terminal_ ? terminalWidth() : 0) {}

// What a command said before it failed is shown before its failure is.
Output::~Output() {
    isWritten(gathered_);
    waitForPager();
}

void Output::begin() {
    begun_ = true;
    if (terminal_) Progress::end();
    if (paged_) pager_ = startPager();
    // A closed pipe is found out by the write, and Ctrl-C is the pager's: it must be waited for.
    std::signal(SIGPIPE, SIG_IGN);
    if (pager_ > 0) std::signal(SIGINT, SIG_IGN);
}

void Output::write(std::string_view text) {
    if (!begun_) begin();
    if (gathered_.empty() && text.size() >= kGathered) {
        if (!isWritten(text)) fail();
        return;
    }
    gathered_ += text;
    if (gathered_.size() >= kGathered) flush();
}

void Output::line(std::string_view text) {
    write(text);
    write("\n");
}

// False with errno.
bool Output::isWritten(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        text.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

// By errno.
void Output::fail() const {
    if (errno == EPIPE) throw Failure{"", pager_ > 0 ? Status::done : Status::trouble};
    throw systemFailure("could not write to standard output");
}

void Output::flush() {
    const bool written = isWritten(gathered_);
    gathered_.clear();
    if (!written) fail();
}

void Output::show() {
    if (terminal_) flush();
}

void Output::finish() {
    flush();
    // Some file systems tell of a full disk only now.
    if (pager_ <= 0 && close(dup(STDOUT_FILENO)) != 0) {
        throw systemFailure("could not write to standard output");
    }
    waitForPager();
}

void Output::waitForPager() {
    if (pager_ <= 0) return;
    close(STDOUT_FILENO);
    while (waitpid(pager_, nullptr, 0) < 0 && errno == EINTR) {
    }
    pager_ = -1;
}

namespace {

// Hues that people of all kinds of colour vision tell apart, readable on dark and on light ground;
// red and amber are taken.
enum Hue : uint8_t { kGrey, kBlue, kCyan, kTeal, kOlive, kPurple, kPink, kHueCount };
constexpr std::array<const char*, kHueCount> kHueCodes{"38;5;245", "38;5;68", "38;5;38", "38;5;36",
                                                       "38;5;100", "38;5;97", "38;5;175"};

constexpr uint32_t kAudioServerWord = 0x2104;

struct Family {
    uint32_t firstClass;
    uint32_t lastClass;
    Hue hue;
};
constexpr Family kFamilies[] = {
    {0, 0, kBlue},     // HDA, historic
    {1, 11, kGrey},    // what all drivers are made of
    {20, 32, kBlue},   // HDA
    {35, 41, kTeal},   // USB
    {42, 42, kOlive},  // voice trigger
    {43, 43, kPurple}, {45, 45, kPurple}, {47, 47, kPurple}, {49, 50, kPurple},  // embedded
    {44, 44, kCyan},   {48, 48, kCyan},                                          // headset
    {46, 46, kOlive},                                                            // microphone
};

}  // namespace

uint8_t hueOf(uint32_t code) {
    if (classWordOf(code) == kAudioServerWord) return kPink;
    if (classWordOf(code) != kAudioClassWord) return kGrey;
    for (const Family& family : kFamilies) {
        const uint32_t id = classIdOf(code);
        if (family.firstClass <= id && id <= family.lastClass) return family.hue;
    }
    return kGrey;
}

std::string Output::styled(std::string_view text, Style style) const {
    if (!colored_ || style.tone == Tone::plain || text.empty()) return std::string(text);
    const char* code = "";
    switch (style.tone) {
        case Tone::plain: break;
        case Tone::head: code = "1"; break;
        case Tone::dim: code = "2"; break;
        case Tone::failure: code = "38;5;172"; break;
        case Tone::dropout: code = "1;38;5;160"; break;
        case Tone::driver: code = kHueCodes[style.hue % kHueCount]; break;
    }
    return "\x1b[" + std::string(code) + "m" + std::string(text) + "\x1b[0m";
}

}  // namespace sonaprobe::scope
