// The decoders as a catalogue.

#include "events/catalog.h"

#include <algorithm>

#include "format/class_table.h"
#include "format/decoders/decoders.h"
#include "registry/audio_class_registry.h"

namespace sonaprobe::events {

std::string TracedClass::title() const {
    return id + ' ' + (isSilent() ? registryName : std::string(decoder->group));
}

std::vector<TracedClass> tracedClasses() {
    std::vector<TracedClass> classes;
    for (uint32_t id = 0; id < kClassTable.size(); ++id) {
        if (kClassTable[id] == nullptr) continue;
        TracedClass traced{.id = std::to_string(id), .decoder = kClassTable[id]};
        const auto entries = AudioClassRegistry::entries();
        const auto entry = std::ranges::find(entries, id, &AudioClassRegistry::Entry::id);
        if (entry != entries.end()) {
            for (const unsigned shift : {24U, 16U, 8U, 0U}) {
                traced.code += static_cast<char>(entry->code >> shift);
            }
            traced.registryName = entry->name;
        }
        classes.push_back(traced);
    }
    classes.push_back({.id = "server", .decoder = &decoders::kAudioServer});
    return classes;
}

std::vector<Event> eventsOf(const TracedClass& traced) {
    std::vector<Event> events;
    if (traced.isSilent()) return events;
    const std::span<const Row> rows = traced.decoder->rows;
    for (size_t i = 0; i < rows.size();) {
        const auto begin = rows.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        const auto next = std::find_if(begin, rows.end(), [](const Row& r) { return r.isEvent(); });
        events.push_back({&rows[i], {begin, next}});
        i = static_cast<size_t>(next - rows.begin());
    }
    return events;
}

std::string_view groupOf(const Decoder& decoder, const Event& event, const Row& text) {
    if (!text.group.empty()) return text.group;
    return !event.event->group.empty() ? event.event->group : decoder.group;
}

std::string_view methodOf(const Event& event, const Row& text) {
    return !text.method.empty() ? text.method : event.event->method;
}

}  // namespace sonaprobe::events
