// Loading. KernelShark's numbers are small: what does not fit shares the last one.

#include "kernelshark/loaded_trace.h"

#include <algorithm>
#include <limits>

#include "common/event_name.h"
#include "common/number.h"

namespace sonaprobe::plugins {

namespace {

// A processor has a row of its own on the screen.
constexpr uint32_t kMostProcessors = 256;
constexpr size_t kMostEvents = 10'000;

}  // namespace

const sonaprobe_value* numberNamed(const sonaprobe_event* event, const char* name) {
    const sonaprobe_value* value = sonaprobe_event_value_named(event, name);
    return value != nullptr && formOf(value) != Form::text ? value : nullptr;
}

// Small ids are kept; others get numbers from the top down.
int32_t LoadedTrace::threadOf(uint64_t id) {
    const auto found = threads_.find(id);
    if (found != threads_.end()) return found->second;
    constexpr auto kMost = std::numeric_limits<int32_t>::max();
    auto number = static_cast<int32_t>(std::min<uint64_t>(id, kMost));
    while (threadIds_.count(number) > 0) --number;
    threads_[id] = number;
    threadIds_[number] = id;
    return number;
}

int16_t LoadedTrace::eventTypeOf(const sonaprobe_event* event) {
    std::string name = events_.size() < kMostEvents ? nameOf(event) : "other codes";
    auto found = eventByName_.find(name);
    if (found == eventByName_.end()) {
        found = eventByName_.emplace(name, static_cast<int16_t>(events_.size())).first;
        events_.push_back({std::move(name), {}});
    }
    std::vector<std::string>& fields = events_[static_cast<size_t>(found->second)].fields;
    const size_t values = sonaprobe_event_value_count(event);
    for (size_t number = 0; number < values; ++number) {
        const sonaprobe_value* value = sonaprobe_event_value(event, number);
        const char* field = sonaprobe_value_name(value);
        if (formOf(value) != Form::text &&
            std::find(fields.begin(), fields.end(), field) == fields.end()) {
            fields.emplace_back(field);
        }
    }
    return found->second;
}

int LoadedTrace::load(const char* path) {
    int result = trace_.open(path);
    if (result < 0) return result;
    OrderedRecord next;
    while ((result = trace_.next(next)) == 1) {
        const sonaprobe_event* event = trace_.eventOf(next.record);
        const uint32_t cpu = std::min(sonaprobe_event_cpu(event), kMostProcessors - 1);
        processors_ = std::max(processors_, static_cast<int>(cpu) + 1);
        rows_.push_back({next.record, next.missing, next.clock.nanoseconds(next.cycle),
                         threadOf(sonaprobe_event_thread(event)), eventTypeOf(event),
                         static_cast<int16_t>(cpu)});
    }
    return result;
}

}  // namespace sonaprobe::plugins
