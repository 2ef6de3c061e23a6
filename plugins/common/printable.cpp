// Escaping.

#include "common/printable.h"

namespace sonaprobe::plugins {

void appendPrintable(std::string& out, const char* text, size_t length) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (size_t at = 0; at < length; ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte >= ' ' && byte <= '~') {
            out += text[at];
        } else if (byte == '\n' || byte == '\t' || byte == '\r') {
            out.append("\\").append(1, byte == '\n' ? 'n' : byte == '\t' ? 't' : 'r');
        } else {
            out.append("\\x").append({kDigits[byte >> 4], kDigits[byte & 15]});
        }
    }
}

}  // namespace sonaprobe::plugins
