// Prints a raw file as sonaprobe -s -H -r does, with the historic class 0 switched on, which no
// option of sonaprobe does. Takes and ignores all options before the path.

#include <cstdio>
#include <fcntl.h>

#include "lines/line_printer.h"
#include "rawfile/slot_reader.h"

using namespace sonaprobe;

int main(int argc, char** argv) {
    OutputLine line({.write = [](void*, const char* text, size_t length) {
        std::fwrite(text, 1, length, stdout);
    }});
    LinePrinter printer({.timeMode = 0, .showThread = 0, .showHistoric = 1}, line);
    SlotReader reader(open(argv[argc - 1], O_RDONLY | O_CLOEXEC));
    for (auto slots = reader.next(); !slots.empty(); slots = reader.next()) {
        for (const TraceRecord& slot : slots) printer.takeSlot(slot);
    }
    return reader.error();
}
