// Names of events.

#include "scope/event_text.h"

#include <array>

#include "analysis/event_names.h"
#include "scope/escape.h"
#include "scope/file_bytes.h"
#include "scope/units.h"

namespace sonaprobe::scope {

CodeNames readCodeNames(const std::string& path) {
    CodeNames names;
    if (path.empty()) return names;
    FileBytes file(path);
    std::array<std::byte, 1 << 14> room;
    for (size_t got = file.read(room); got > 0; got = file.read(room)) {
        names.take(reinterpret_cast<const char*>(room.data()), got);
    }
    names.endFile();
    return names;
}

std::string eventText(uint32_t code, const CodeNames& names) {
    const EventName name = nameOf(code);
    if (name.full.empty()) {
        const char* const given = names.nameOf(codeOf(code));
        return given != nullptr && *given != '\0' ? escaped(given)
                                                  : "code " + codeText(codeOf(code));
    }
    std::string text(name.full);
    if (name.ambiguous) text += ' ' + codeText(code);
    return text;
}

std::string eventName(const Event& event, const CodeNames& names) {
    if (event.outcome == Outcome::unknown) return eventText(event.record->debugid, names);
    std::string name(groupOf(event));
    name += kNameSeparator;
    name += methodOf(event);
    return name;
}

void addEvent(Json& entry, uint32_t code) {
    entry["code"] = codeText(code);
    const EventName name = nameOf(code);
    if (name.full.empty()) return;
    entry["driver"] = name.group;
    entry["method"] = name.method;
}

}  // namespace sonaprobe::scope
