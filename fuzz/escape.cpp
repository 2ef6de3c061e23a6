// Texts of any bytes on their way to a terminal, into JSON and onto the timeline's page: they read
// back as they were, and nothing in them ends the text around them.

#include "scope/escape.h"

#include <array>
#include <string>

#include "fuzz.h"
#include "page_reader.h"
#include "scope/export/put_json.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

namespace {

// By byte: how it is written, as the C library prints it.
std::array<std::string, 256> forms() {
    std::array<std::string, 256> all;
    for (size_t byte = 0; byte < all.size(); ++byte) {
        char text[8];
        const bool plain = byte >= ' ' && byte < 0x7F;
        std::snprintf(text, sizeof text, plain ? "%c" : "\\x%02x", static_cast<int>(byte));
        all[byte] = text;
    }
    all['\n'] = "\\n";
    all['\t'] = "\\t";
    all['\r'] = "\\r";
    return all;
}

// What a JSON text says, which may stand in a script of a page.
std::string jsonRead(std::string_view text) {
    require(text.size() >= 2 && text.front() == '"' && text.back() == '"', "a text has its marks");
    text = text.substr(1, text.size() - 2);
    std::string read;
    while (!text.empty()) {
        require(text[0] != '"' && text[0] != '<', "nothing ends the text or the script");
        if (text.starts_with("\\u003c")) {
            read += '<';
            text.remove_prefix(6);
            continue;
        }
        if (text[0] == '\\') {
            text.remove_prefix(1);
            require(text.starts_with('"') || text.starts_with('\\'), "the escape is known");
        }
        read += text[0];
        text.remove_prefix(1);
    }
    return read;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::array<std::string, 256> kForms = forms();
    static std::array<char, size_t{6} * 4 * 4096> room;
    const std::string bytes(data, data + std::min<size_t>(size, 4096));

    std::string expected;
    bool plain = true;
    for (const char byte : bytes) {
        const std::string& form = kForms[static_cast<unsigned char>(byte)];
        plain = plain && form.size() == 1;
        expected += form;
    }
    const std::string text = escaped(bytes);
    require(text == expected, "a text is escaped byte by byte");
    require(isPrintable(bytes) == plain, "what needs no escape is known");

    const char* const end = putJsonText(room.data(), text);
    const std::string_view json(room.data(), static_cast<size_t>(end - room.data()));
    require(jsonRead(json) == text, "a JSON text reads back");
    require(fuzz::bytesOfPage(timeline::asPageText(bytes)) == bytes, "a page's bytes read back");
    return 0;
}
