// The records of a raw file in the order of time, for programs that take no other.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <sonaprobe/sonaprobe.h>
#include <unordered_map>

namespace sonaprobe::plugins {

struct CloseReader {
    void operator()(sonaprobe_reader* reader) const { sonaprobe_close(reader); }
};
using Reader = std::unique_ptr<sonaprobe_reader, CloseReader>;

// A clock that never goes back. Another divisor makes another clock, which goes on where the one
// before it stood.
struct Clock {
    uint64_t number = 0;
    uint64_t frequency = 0;  // cycles a second, not 0
    int64_t zero = 0;        // nanoseconds at cycle 0

    int64_t nanoseconds(uint64_t cycle) const;
};

struct OrderedRecord {
    sonaprobe_record record{};
    uint64_t missing = 0;  // records that were lost since the one before it in the file
    Clock clock;
    // Ticks of the trace clock, up to a step back. At a step back time goes on from the latest
    // before it. Never less than before on the same clock; nanoseconds() holds all of them.
    uint64_t cycle = 0;
};

class OrderedTrace {
  public:
    // 0 or a negative errno value.
    int open(const char* path);

    // 1 and the next record, 0 at the end, or a negative errno value. Want of memory is thrown, as
    // std::bad_alloc.
    int next(OrderedRecord& record);

    // At the end: how many records were lost after the last.
    uint64_t missingAtEnd() const { return missing_; }

    // A kept record's event, which holds until the next call of next() or eventOf().
    const sonaprobe_event* eventOf(const sonaprobe_record& record) {
        return sonaprobe_event_again(reader_.get(), &record);
    }

  private:
    // A stretch ends where the clock steps back, and where another divisor takes over.
    struct Place {
        uint64_t stretch;
        uint64_t tick;
        bool operator<(const Place& other) const {
            return stretch != other.stretch ? stretch < other.stretch : tick < other.tick;
        }
    };
    struct Pending {
        sonaprobe_record record;
        uint64_t missing;
        uint64_t frequency;
    };

    void readOne();
    void take(const sonaprobe_event* event);
    bool stepsBack(uint64_t tick, uint64_t thread);
    bool isFirstSettled() const;
    void setClock(const Place& place, uint64_t frequency);

    Reader reader_;
    int end_ = 1;  // what the reader said last

    // Of what was read.
    uint64_t stretch_ = 0;
    uint64_t frequency_ = 1'000'000'000;  // until a divisor tells another
    uint64_t latest_ = 0;                 // tick of the stretch
    uint64_t missing_ = 0;
    uint64_t invalidSlots_ = 0;
    std::unordered_map<uint64_t, Place> lastOfThread_;
    std::multimap<Place, Pending> pending_;

    // Of what was handed out.
    Place last_{0, 0};
    Clock clock_;
    uint64_t lastCycle_ = 0;
};

}  // namespace sonaprobe::plugins
