// A raw file as KernelShark holds it: all records, and small numbers for threads and events.

#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/ordered_trace.h"

namespace sonaprobe::plugins {

class LoadedTrace {
  public:
    struct Row {
        sonaprobe_record record;
        uint64_t missing;  // records lost before it
        int64_t time;      // nanoseconds, never less than the row's before
        int32_t thread;
        int16_t event;
        int16_t processor;
    };
    struct EventType {
        std::string name;
        std::vector<std::string> fields;  // the names of its numbers
    };

    // Reads a file to its end: 0 or a negative errno value. Want of memory is thrown, as
    // std::bad_alloc.
    int load(const char* path);

    const std::vector<Row>& rows() const { return rows_; }
    uint64_t missingAtEnd() const { return trace_.missingAtEnd(); }
    const std::vector<EventType>& events() const { return events_; }
    int processors() const { return processors_; }

    // The thread's own id; that of a record of it.
    uint64_t threadId(int32_t thread) const { return threadIds_.at(thread); }

    // The event of a row's record, until the next call.
    const sonaprobe_event* eventOf(const sonaprobe_record& record) {
        return trace_.eventOf(record);
    }

  private:
    int32_t threadOf(uint64_t id);
    int16_t eventTypeOf(const sonaprobe_event* event);

    OrderedTrace trace_;
    std::vector<Row> rows_;
    std::vector<EventType> events_;
    std::unordered_map<std::string, int16_t> eventByName_;
    std::unordered_map<uint64_t, int32_t> threads_;
    std::unordered_map<int32_t, uint64_t> threadIds_;
    int processors_ = 1;
};

// The value of that name where it is a number, else null.
const sonaprobe_value* numberNamed(const sonaprobe_event* event, const char* name);

}  // namespace sonaprobe::plugins
