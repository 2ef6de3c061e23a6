// How many of the first records are of known drivers, and whether a divisor stands before them.

#include "common/likeness.h"

#include <cmath>
#include <limits>
#include <sys/stat.h>

#include "common/ordered_trace.h"

namespace sonaprobe::plugins {

double likenessOf(const char* path) {
    constexpr int kRecords = 256;
    struct stat status {};
    if (::stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    sonaprobe_reader* opened = nullptr;
    if (sonaprobe_open_file(&opened, path) != 0) return 0;
    const Reader reader(opened);
    // Only a divisor makes a number of it.
    sonaprobe_set_ticks_per_microsecond(reader.get(), std::numeric_limits<double>::quiet_NaN());
    int records = 0;
    int known = 0;
    bool hasDivisor = false;
    const sonaprobe_event* event = nullptr;
    while (records < kRecords && sonaprobe_next(reader.get(), &event) == 1) {
        if (records++ == 0) hasDivisor = !std::isnan(sonaprobe_event_ticks_per_microsecond(event));
        if (sonaprobe_event_outcome(event) != SONAPROBE_OUTCOME_UNKNOWN) ++known;
    }
    if (records == 0) return 0;
    const double share = static_cast<double>(known) / records;
    // Of the codes that -a adds most are unknown, but then a divisor comes first.
    if (hasDivisor) return 0.5 + 0.45 * share;
    return share >= 0.5 ? 0.8 * share : 0;
}

}  // namespace sonaprobe::plugins
