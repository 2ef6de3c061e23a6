/* Prints the failures that a raw file tells of: when, which driver and method, and its words. */

#include <sonaprobe/sonaprobe.h>
#include <stdio.h>
#include <string.h>

static void print_event(const sonaprobe_event* event) {
    const double ticks_per_second = 1e6 * sonaprobe_event_ticks_per_microsecond(event);
    printf("%.6f  %s::%s  %s\n", (double)sonaprobe_event_time(event) / ticks_per_second,
           sonaprobe_event_group(event), sonaprobe_event_method(event),
           sonaprobe_event_text(event, NULL));
}

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "/dev/stdin";
    sonaprobe_reader* reader;
    int result = sonaprobe_open_file(&reader, path);
    if (result == 0) {
        const sonaprobe_event* event;
        while ((result = sonaprobe_next(reader, &event)) > 0) {
            if (sonaprobe_event_is_failure(event)) print_event(event);
        }
        sonaprobe_close(reader);
    }
    if (result == 0) return 0;
    fprintf(stderr, "%s: %s\n", path, strerror(-result));
    return 1;
}
