// A sink that keeps what lines it is handed, as text.

#pragma once

#include <string>
#include <utility>

#include "lines/output_line.h"

namespace sonaprobe {

struct CollectedLines {
    std::string text;

    Sink sink() {
        return {.write =
                    [](void* self, const char* lines, size_t length) {
                        static_cast<CollectedLines*>(self)->text.append(lines, length);
                    },
                .context = this};
    }
    // What has come since the last call.
    std::string take() { return std::exchange(text, {}); }
};

}  // namespace sonaprobe
