// Exports of any records under any name: each format of text stays in its grammar, whatever the
// bytes say.
//
// An input is a byte for the format, one for its options, then a name and slots.

#include <cctype>
#include <string>
#include <vector>

#include "analysis/selection.h"
#include "fuzz.h"
#include "grammar.h"
#include "named_trace.h"
#include "scope/export/feed.h"
#include "scope/failure.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

namespace {

void checkFolded(const std::string& text) {
    fuzz::forEachLine(text, [](std::string_view line) {
        const size_t blank = line.rfind(' ');
        require(blank != std::string_view::npos && blank > 0, "a path has a time");
        for (const char digit : line.substr(blank + 1)) {
            require(std::isdigit(static_cast<unsigned char>(digit)) != 0, "a time is a number");
        }
        const std::string_view path = line.substr(0, blank);
        require(path.find(";;") == std::string_view::npos && !path.starts_with(';') &&
                    !path.ends_with(';'),
                "no frame is empty");
    });
}

void checkCallgrind(const std::string& text) {
    constexpr std::string_view kBegins[] = {
        "# callgrind", "version:", "creator:", "positions:", "events:",
        "event:",      "summary:", "cmd:",     "fl=",        "fn=",
        "cfi=",        "cfn=",     "calls=",   "desc:",      "0 "};
    fuzz::forEachLine(text, [&](std::string_view line) {
        require(line.empty() || std::ranges::any_of(
                                    kBegins, [&](auto begin) { return line.starts_with(begin); }),
                "each line is one of the format's");
    });
}

using Check = void (*)(const std::string&);
Check checkOf(std::string_view format) {
    if (format == "json") return fuzz::checkJson;
    if (format == "csv") return fuzz::checkCsv;
    if (format == "folded") return checkFolded;
    if (format == "callgrind") return checkCallgrind;
    return [](const std::string& text) { require(Json::accept(text), "a document is whole"); };
}

void checkText(const std::string& text, std::string_view format) {
    fuzz::checkPrintable(text, format);
    checkOf(format)(text);
}

void exportText(const FormatEntry& entry, const FormatOptions& options, const TraceOptions& trace) {
    std::string text;
    TextOutput out(
        {.write = [](void* all, const char* some,
                     size_t length) { static_cast<std::string*>(all)->append(some, length); },
         .context = &text});
    scope::Input input(trace);
    const auto format = entry.make(options, out);
    if (entry.readsTwice) feedAhead(Selection(), trace, *format);
    feed(input, Selection(), trace, entry.readsCalls(options.what), *format);
    out.handOver();
    checkText(text, entry.name);
}

std::vector<FormatEntry> textFormats() {
    std::vector<FormatEntry> all;
    std::ranges::copy_if(formats(), std::back_inserter(all),
                         [](const FormatEntry& entry) { return entry.make != nullptr; });
    return all;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<FormatEntry> kFormats = textFormats();
    fuzz::Input input(data, size);
    const FormatEntry& entry = kFormats[input.number<uint8_t>() % kFormats.size()];
    const auto how = input.number<uint8_t>();
    CodeNames names;
    fuzz::takeName(input, names);
    const FormatOptions options{.file = "trace",
                                .what = static_cast<What>(how % 3),
                                .waiting = static_cast<Waiting>(how / 3 % 2),
                                .names = &names};
    try {
        exportText(entry, options, fuzz::takeTrace(input));
    } catch (const Failure& failure) {
        require(!failure.message.empty(), "a failure is told");
    }
    return 0;
}
