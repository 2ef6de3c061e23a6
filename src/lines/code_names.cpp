// Reading the lines of a code-name file.

#include "lines/code_names.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace sonaprobe {

// One line of the file, or one piece of a long line: the first to name a code keeps it.
void CodeNames::endPiece() {
    piece_[length_] = '\0';
    length_ = 0;
    char* rest = piece_;
    const char* const token = strsep(&rest, "\t ");
    const unsigned long long code = std::strtoull(token, nullptr, 0);
    if (code > std::numeric_limits<uint32_t>::max()) return;
    const char* name = rest != nullptr ? rest : "";
    if (rest != nullptr) {
        char* at = rest;
        for (; *at != '\0' && *at != '\n'; ++at) {
            if (*at == '\t' || *at == ' ') ++name;
        }
        *at = '\0';
    }
    names_.try_emplace(static_cast<uint32_t>(code), name);
}

void CodeNames::take(const char* bytes, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        piece_[length_++] = bytes[i];
        if (bytes[i] == '\n' || length_ == kMaxCodeName) endPiece();
    }
}

void CodeNames::endFile() {
    if (length_ > 0) endPiece();
}

void CodeNames::clear() {
    names_.clear();
    length_ = 0;
}

NameLookup CodeNames::lookup() const {
    return {
        .find = [](const void* names,
                   uint32_t code) { return static_cast<const CodeNames*>(names)->nameOf(code); },
        .context = this};
}

}  // namespace sonaprobe
