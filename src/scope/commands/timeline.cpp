// sonascope timeline: a trace as one page to look at and to hand on.

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/memory_limit.h"
#include "scope/new_file.h"
#include "scope/repeatable.h"
#include "scope/selection_options.h"
#include "scope/timeline/packer.h"
#include "scope/timeline/page_file.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kMost = 20'000'000;

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    NewFileOptions newFile;
    bool open = false;
    size_t most = kMost;
};

// The file's name without its folders.
std::string titleOf(const std::string& path) {
    if (path == "-") return "standard input";
    return escaped(std::string_view(path).substr(path.rfind('/') + 1));
}

// A path of a file that is not there, in the folder for temporary files.
std::string lastingPath() {
    constexpr std::string_view kEnd = ".html";
    const char* const folder = std::getenv("TMPDIR");
    std::string path =
        std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/timeline-XXXXXX";
    path += kEnd;
    const int file = mkstemps(path.data(), static_cast<int>(kEnd.size()));
    if (file < 0) throw systemFailure("could not write " + escaped(path));
    close(file);
    return path;
}

// Starts the browser of $BROWSER, else the one that xdg-open knows.
void openInBrowser(const std::string& path) {
    const char* const chosen = std::getenv("BROWSER");
    const std::string browser = chosen != nullptr && *chosen != '\0' ? chosen : "xdg-open";
    std::array<const char*, 3> words{browser.c_str(), path.c_str(), nullptr};
    pid_t process = 0;
    liftMemoryLimit();
    const int error = posix_spawnp(&process, browser.c_str(), nullptr, nullptr,
                                   const_cast<char* const*>(words.data()), environ);
    if (error != 0) {
        errno = error;
        throw systemFailure("could not start " + escaped(browser) + " to show " + escaped(path));
    }
}

void putBytes(NewFile& file, std::string_view text) {
    file.write(std::as_bytes(std::span(text.data(), text.size())));
}

Status run(Options& options) {
    if (!timeline::hasPage()) {
        throw Failure{"this build of sonascope has no timeline: it was built without esbuild"};
    }
    if (options.trace.kernelTime) {
        throw Failure{"the page counts time from the first record; leave out --kernel-time"};
    }
    if (options.newFile.path.empty() && !options.open) {
        throw Failure{"say where the page goes: -o PAGE.html, -o - or --open"};
    }
    if (options.newFile.path == "-" && options.open) {
        throw Failure{"--open needs a file; leave out -o, or name one"};
    }
    const std::string title = titleOf(options.trace.path);
    makeRepeatable(options.trace);
    const Selection selection = selectionOf(options.selection, options.trace);
    const auto pack = [&] {
        timeline::IoObserving io(options.trace);
        const timeline::Survey survey = timeline::survey(options.trace, selection);
        const timeline::Thinning thinning =
            timeline::thinned(options.trace, survey, io, options.most);
        return timeline::pack(options.trace, title, survey, thinning, io);
    };
    if (options.newFile.path == "-") {
        Output out({.noPager = true});
        timeline::putPage(pack(), title, [&](std::string_view text) { out.write(text); });
        out.finish();
        return Status::done;
    }
    const bool lasting = options.newFile.path.empty();
    const std::string path = lasting ? lastingPath() : options.newFile.path;
    {
        const FileBytes input(options.trace.path);
        NewFile file(path, options.newFile.force || lasting, input);
        timeline::putPage(pack(), title, [&](std::string_view text) { putBytes(file, text); });
        file.keep();
    }
    if (options.open) openInBrowser(path);
    Output out({});
    out.line(escaped(path));
    out.finish();
    return Status::done;
}

}  // namespace

Run setUpTimeline(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addValue(app, "-o,--output", "PAGE", options->newFile.path,
             "the page to write, or - for standard output");
    addFlag(app, "--force", options->newFile.force, "write over a file that exists");
    addFlag(app, "--open", options->open, "show the page in the browser ($BROWSER, xdg-open)");
    addValue(app, "--most", "RECORDS", options->most,
             "merge short calls of a trace that has more records (20000000)");
    addSelectionOptions(app, options->selection);
    addExamples(app,
                "  sonascope timeline trace.raw -o trace.html\n"
                "  sonascope timeline trace.raw.zst --around dropout=50ms --open\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
