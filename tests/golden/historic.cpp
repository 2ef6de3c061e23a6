// Prints a raw file as sonaprobe -s -H -r does, with the historic class 0 switched on, which no
// option of sonaprobe does. Takes and ignores all options before the path.

#include "probe/settings.h"
#include "rawfile/raw_reader.h"

int main(int, char** argv) {
    sonaprobe::settings.showHistoric = 1;
    sonaprobe::settings.timeMode = 0;
    sonaprobe::settings.showThread = 0;
    const char* path = "";
    for (; *argv != nullptr; ++argv) path = *argv;
    sonaprobe::readRawFile(path);
}
