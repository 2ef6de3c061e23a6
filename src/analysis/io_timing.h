// When each I/O cycle was due, how long it had, and what its parts take as a rule.

#pragma once

#include <map>
#include <optional>
#include <vector>

#include "analysis/io_cycles.h"

namespace sonaprobe {

// What an owner of a cycle's time takes in healthy cycles.
struct Usual {
    Nanoseconds median = 0;
    Nanoseconds reach = 0;  // how far it scatters above the median

    Nanoseconds most() const { return median + reach; }
};

// How long so many frames take.
Nanoseconds timeOfFrames(double frames, double perFrame);

// The I/O of one thread, timed.
struct TimedThread {
    IoThread* io = nullptr;
    Nanoseconds clockShift = 0;  // by which host times were moved; 0 where the clocks are one
    bool hasDropouts = false;

    // What dropouts are judged by; not known of a thread that has none.
    std::map<OwnerKey, Usual> usual;
    Usual any;  // for owners that no healthy cycle has: nothing, and the least reach

    const Usual& usualOf(OwnerKey owner) const;

    // What an owner's time is longer than it takes as a rule.
    Nanoseconds excessOf(OwnerKey owner, Nanoseconds time) const {
        return time - usualOf(owner).median;
    }

    // Nanoseconds a frame near a cycle; 0 where the trace does not tell.
    double perFrame(size_t cycle) const;

    std::vector<double> perFrameByBlock;

    // Where the line of samples and times that the cycles follow puts a sample, as the latest cycle
    // that ended before a time knew it; nothing where the last one was long before.
    std::optional<Nanoseconds> timeOf(uint64_t sample, Nanoseconds before) const;

    std::vector<const Stamp*> stamps;  // of its device

    // Not known of a thread without dropouts either.
    Nanoseconds stampShift = 0;    // of the stamps after the cycles' line, in the median
    Nanoseconds stampScatter = 0;  // around that, in the median
};

// Times the cycles of all threads of a trace, which has to stay where it is.
std::vector<TimedThread> timeThreads(IoTrace& trace);

// Where each thread stands among them, by the clock's number.
std::map<uint32_t, size_t> placesOf(const std::vector<TimedThread>& threads);

// The upper median of what is not empty.
Nanoseconds medianOf(std::vector<Nanoseconds> values);

}  // namespace sonaprobe
