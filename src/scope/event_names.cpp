// Names events.

#include "scope/event_names.h"

#include <array>

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

std::string eventName(const Event& event, const CodeNames& names) {
    if (event.outcome != Outcome::unknown) {
        std::string name(groupOf(event));
        name += kNameSeparator;
        name += methodOf(event);
        return name;
    }
    const uint32_t code = codeOf(event.record->debugid);
    const char* const name = names.nameOf(code);
    return name != nullptr && *name != '\0' ? escaped(name) : "code " + codeText(code);
}

}  // namespace sonaprobe::scope
