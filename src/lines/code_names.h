// Names of trace codes, as a code-name file gives them.
//
// The file has one code a line: a number, blanks or tabs, the name. What counts is a plain scan of
// the file from its start for every lookup, by pieces of 63 characters: a longer line is several
// lines, a line without number has the code 0, and each blank within a name costs a character at
// its front.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "lines/name_lookup.h"

namespace sonaprobe {

class CodeNames {
  public:
    // Takes the file's next bytes, however they are cut. A file's last line may lack its end.
    void take(const char* bytes, size_t length);
    void endFile();
    void clear();

    // The first name that the file gives to the code, or null. Holds until the names change.
    const char* nameOf(uint32_t code) const {
        const auto found = names_.find(code);
        return found == names_.end() ? nullptr : found->second.c_str();
    }
    // Of this object, which outlives the lookup.
    NameLookup lookup() const;

  private:
    void endPiece();

    std::unordered_map<uint32_t, std::string> names_;
    char piece_[kMaxCodeName + 1] = {};
    size_t length_ = 0;
};

}  // namespace sonaprobe
