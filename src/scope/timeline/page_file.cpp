// Puts the page together.

#include "scope/timeline/page_file.h"

#include <array>
#include <charconv>

#include "scope/timeline/page_parts.h"

namespace sonaprobe::scope::timeline {

namespace {

// Text that no browser takes for markup, with its bytes beyond ASCII as U+FFFD.
std::string htmlEscaped(std::string_view text) {
    std::string safe;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x80 || byte == 0) {
            safe += "&#xFFFD;";
        } else if (std::string_view("<>&\"'").find(character) != std::string_view::npos) {
            safe += "&#" + std::to_string(byte) + ";";
        } else {
            safe.push_back(character);
        }
    }
    return safe;
}

// Of hexadecimal digits.
std::string base64Of(std::string_view digits) {
    constexpr std::string_view kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    unsigned bits = 0;
    unsigned value = 0;
    for (size_t i = 0; i < digits.size(); i += 2) {
        unsigned byte = 0;
        std::from_chars(digits.data() + i, digits.data() + i + 2, byte, 16);
        value = value << 8 | byte;
        for (bits += 8; bits >= 6; bits -= 6) text.push_back(kLetters[value >> (bits - 6) & 63]);
    }
    if (bits > 0) text.push_back(kLetters[value << (6 - bits) & 63]);
    while (text.size() % 4 != 0) text.push_back('=');
    return text;
}

// What the page may do: run its own script and a worker made of it. Nothing can be fetched, and
// nothing be sent.
std::string policy() {
    return "default-src 'none'; script-src 'sha256-" + base64Of(kPageParts.scriptHash) +
           "'; style-src 'sha256-" + base64Of(kPageParts.styleHash) +
           "'; worker-src blob:; base-uri 'none'; form-action 'none'";
}

}  // namespace

bool hasPage() { return !kPageParts.script.empty(); }

void putPage(const PackedTrace& trace, std::string_view title,
             const std::function<void(std::string_view)>& put) {
    const auto putChunk = [&](std::string_view id, std::string_view chunk) {
        put("<script type=\"application/octet-stream\" id=\"");
        put(id);
        put("\">");
        put(chunk);
        put("</script>\n");
    };
    const auto putPart = [&](std::string_view name) {
        if (name == "TITLE") put(htmlEscaped(title));
        if (name == "POLICY") put(policy());
        if (name == "STYLE") put(kPageParts.style);
        if (name == "SCRIPT") put(kPageParts.script);
        if (name == "HEAD") putChunk("head", trace.head);
        if (name != "DATA") return;
        for (size_t i = 0; i < trace.levels.size(); ++i) {
            putChunk("level" + std::to_string(i), trace.levels[i]);
        }
        putChunk("long", trace.longBars);
        putChunk("cycles", trace.cycles);
        for (size_t i = 0; i < trace.blocks.size(); ++i) {
            putChunk("block" + std::to_string(i), trace.blocks[i]);
        }
    };
    std::string_view rest = kPageParts.page;
    while (!rest.empty()) {
        const size_t mark = rest.find('@');
        put(rest.substr(0, mark));
        if (mark == std::string_view::npos) return;
        const size_t end = rest.find('@', mark + 1);
        putPart(rest.substr(mark + 1, end - mark - 1));
        rest = rest.substr(end + 1);
    }
}

}  // namespace sonaprobe::scope::timeline
