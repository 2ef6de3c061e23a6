// The code-name file: any bytes name the codes that a plain scan from the start finds, and no
// others.

#include "lines/code_names.h"

#include <map>
#include <string>

#include "fuzz.h"

using namespace sonaprobe;
using fuzz::require;

namespace {

// The name that a line, or a piece of one, gives to a code.
void takePiece(std::string piece, std::map<unsigned long, std::string>& names) {
    char* rest = piece.data();
    const unsigned long code = std::strtoul(strsep(&rest, "\t "), nullptr, 0);
    std::string name = rest != nullptr ? rest : "";
    name = name.substr(0, name.find('\n'));
    const auto blanks = std::ranges::count_if(name, [](char c) { return c == '\t' || c == ' '; });
    names.try_emplace(code, name.substr(static_cast<size_t>(blanks)));
}

std::map<unsigned long, std::string> scan(std::span<const uint8_t> bytes) {
    std::map<unsigned long, std::string> names;
    std::string piece;
    for (const uint8_t byte : bytes) {
        piece += static_cast<char>(byte);
        if (byte != '\n' && piece.size() < kMaxCodeName) continue;
        takePiece(piece, names);
        piece.clear();
    }
    if (!piece.empty()) takePiece(piece, names);
    return names;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CodeNames codeNames;
    const size_t cut = size > 0 ? data[0] % size : 0;
    const auto* const bytes = reinterpret_cast<const char*>(data);
    codeNames.take(bytes, cut);
    codeNames.take(bytes + cut, size - cut);
    codeNames.endFile();
    const auto names = scan({data, size});
    for (const auto& [code, name] : names) {
        if (code > UINT32_MAX) break;
        const char* const found = codeNames.nameOf(static_cast<uint32_t>(code));
        require(found != nullptr && found == name, "a code has the first name of it in the file");
    }
    for (const uint32_t code : {0U, 4U, 0x01300004U, 0xFFFFFFFFU}) {
        require((codeNames.nameOf(code) == nullptr) == !names.contains(code),
                "a code that the file does not name has no name");
    }
    return 0;
}
