// Names of events.

#include "scope/event_text.h"

#include "analysis/event_names.h"
#include "scope/units.h"

namespace sonaprobe::scope {

std::string eventText(uint32_t code) {
    const EventName name = nameOf(code);
    if (name.full.empty()) return "code " + codeText(code);
    std::string text(name.full);
    if (name.ambiguous) text += ' ' + codeText(code);
    return text;
}

void addEvent(Json& entry, uint32_t code) {
    entry["code"] = codeText(code);
    const EventName name = nameOf(code);
    if (name.full.empty()) return;
    entry["driver"] = name.group;
    entry["method"] = name.method;
}

}  // namespace sonaprobe::scope
