// The C interface: lines, and the names of codes on them.

#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>

#include "capi/handles.h"
#include "lines/code_names.h"
#include "lines/line_printer.h"

using namespace sonaprobe;

struct sonaprobe_names {
    CodeNames names;
};

// The options are settled when the first line is asked for, which makes the printer.
struct sonaprobe_printer {
    LineOptions options;
    NameLookup names;
    std::string text;  // what the line has handed over
    bool lacksMemory = false;
    OutputLine line{{.write = takeLine, .context = this}};
    std::optional<LinePrinter> printer;

    // Nothing may be thrown through the line that hands its text over.
    static void takeLine(void* context, const char* text, size_t length) {
        auto& self = *static_cast<sonaprobe_printer*>(context);
        const auto append = [&] { return self.text.append(text, length), 0; };
        if (!self.lacksMemory) self.lacksMemory = orNoMemory(append) < 0;
    }
};

namespace {

struct Flag {
    sonaprobe_line_option option = SONAPROBE_LINE_TIME;
    uint32_t LineOptions::*field = nullptr;
    bool isInverse = false;
};

constexpr Flag kFlags[] = {
    {SONAPROBE_LINE_CPU, &LineOptions::showCpu},
    {SONAPROBE_LINE_THREAD, &LineOptions::showThread},
    {SONAPROBE_LINE_CODE, &LineOptions::showCodes},
    {SONAPROBE_LINE_INDENTATION, &LineOptions::indent},
    {SONAPROBE_LINE_GROUP, &LineOptions::showGroup},
    {SONAPROBE_LINE_METHOD, &LineOptions::showMethod},
    {SONAPROBE_LINE_PADDING, &LineOptions::noSeparator, true},
    {SONAPROBE_LINE_OBJECT, &LineOptions::showPointer},
    {SONAPROBE_LINE_BASIC, &LineOptions::basicFormat},
    {SONAPROBE_LINE_AUDIO_SERVER, &LineOptions::includeHAL},
    {SONAPROBE_LINE_VERBOSE, &LineOptions::verbose},
};

static_assert(SONAPROBE_TIME_KERNEL == kKernelTime && SONAPROBE_TIME_LOCAL == kLocalTime);

constexpr unsigned kClassIds = 64;

int filter(sonaprobe_printer* printer, ClassIdSet LineOptions::*set, unsigned id) {
    if (printer->printer) return -EBUSY;
    if (id >= kClassIds) return -EINVAL;
    (printer->options.*set).insert(id);
    return 0;
}

// Reads a whole code-name file; 0 or a negative errno value.
int readNames(CodeNames& names, int file) {
    char piece[4096];
    for (;;) {
        const ssize_t got = ::read(file, piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -errno;
        if (got == 0) break;
        names.take(piece, static_cast<size_t>(got));
    }
    names.endFile();
    return 0;
}

}  // namespace

int sonaprobe_open_printer(sonaprobe_printer** printer) {
    return orNoMemory([&] {
        *printer = new sonaprobe_printer;
        return 0;
    });
}

void sonaprobe_close_printer(sonaprobe_printer* printer) { delete printer; }

int sonaprobe_printer_set(sonaprobe_printer* printer, sonaprobe_line_option option, int value) {
    if (printer->printer) return -EBUSY;
    if (option == SONAPROBE_LINE_TIME) {
        if (value < SONAPROBE_TIME_NONE || value > SONAPROBE_TIME_LOCAL) return -EINVAL;
        printer->options.timeMode = static_cast<uint32_t>(value);
        return 0;
    }
    if (value != 0 && value != 1) return -EINVAL;
    if (option == SONAPROBE_LINE_ALL_CODES) {
        printer->options.printMask = LineOptions{}.printMask | (value != 0 ? kPrintAll : 0);
        return 0;
    }
    for (const Flag& flag : kFlags) {
        if (flag.option != option) continue;
        printer->options.*flag.field = (value != 0) != flag.isInverse ? 1 : 0;
        return 0;
    }
    return -EINVAL;
}

int sonaprobe_printer_filter_out(sonaprobe_printer* printer, unsigned id) {
    return filter(printer, &LineOptions::filterOut, id);
}

int sonaprobe_printer_filter_all_except(sonaprobe_printer* printer, unsigned id) {
    return filter(printer, &LineOptions::filterAllExcept, id);
}

int sonaprobe_printer_set_names(sonaprobe_printer* printer, const sonaprobe_names* names) {
    if (printer->printer) return -EBUSY;
    printer->names = names != nullptr ? names->names.lookup() : NameLookup{};
    return 0;
}

int sonaprobe_print(sonaprobe_printer* printer, const sonaprobe_event* event, const char** line,
                    size_t* length) {
    if (!printer->printer) {
        printer->printer.emplace(printer->options, printer->line, printer->names);
    }
    std::string& text = printer->text;
    text.clear();
    printer->lacksMemory = false;
    printer->printer->setTicksPerMicrosecond(event->ticksPerMicrosecond);
    printer->printer->print(event->record);
    if (printer->lacksMemory) return -ENOMEM;
    if (text.empty()) return 0;
    text.pop_back();  // the line end
    *line = text.c_str();
    if (length != nullptr) *length = text.size();
    return 1;
}

void sonaprobe_printer_reset_indentation(sonaprobe_printer* printer) {
    if (printer->printer) printer->printer->resetIndentation();
}

int sonaprobe_open_names(sonaprobe_names** names, const char* path) {
    const int file = openInput(path);
    if (file < 0) return file;
    const int result = orNoMemory([&] {
        auto opened = std::make_unique<sonaprobe_names>();
        const int error = readNames(opened->names, file);
        if (error == 0) *names = opened.release();
        return error;
    });
    ::close(file);
    return result;
}

void sonaprobe_close_names(sonaprobe_names* names) { delete names; }

const char* sonaprobe_name_of_code(const sonaprobe_names* names, uint32_t code) {
    return names->names.nameOf(codeOf(code));
}
