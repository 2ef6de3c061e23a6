// Prints the decoder tables as the C functions that one would first write by hand: a switch over
// the event's code, and an fprintf for each text. bench/straightforward.c includes them.

#include <cstdio>
#include <string>
#include <string_view>

#include "events/catalog.h"
#include "events/conversion.h"
#include "events/spelling.h"

namespace {

using namespace sonaprobe;
using namespace sonaprobe::events;

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        if (c == '\t') {
            result += "\\t";
        } else {
            result += c;
        }
    }
    return result + '"';
}

// A slice as a number of its own width.
std::string sliced(Slice slice) {
    const std::string word = "r->arg" + std::to_string(slice.word);
    switch (slice.bits()) {
        case 64: return word;
        case 32:
            return slice.dropHigh == 0 ? "(uint32_t)(" + word + " >> 32)" : "(uint32_t)" + word;
        default: return "(uint8_t)(" + word + " >> " + std::to_string(56 - slice.dropHigh) + ')';
    }
}

std::string joined(std::initializer_list<std::string> parts) {
    std::string result;
    for (const std::string& part : parts) result += ", " + part;
    return result;
}

// What fills the conversions of a piece, each behind a comma.
std::string argumentsOf(const Text& text, const Piece& piece) {
    const std::string value = sliced(piece.slice);
    const Conversion conversion =
        readConversion(text.text.substr(size_t{piece.literalBegin} + piece.literalLength));
    switch (piece.reading) {
        case Reading::nothing: return "";
        case Reading::signedDecimal: {
            const std::string number = piece.signExtend ? "(int32_t)" + value : value;
            return (conversion.wide ? ", (long long)" : ", (int)") + number;
        }
        case Reading::unsignedDecimal:
        case Reading::hexadecimal:
            return (conversion.wide ? ", (unsigned long long)" : ", (unsigned)") + value;
        case Reading::pointer: return ", (unsigned long long)" + value;
        case Reading::words: {
            const Text::Words& words = text.wordPairs[piece.wordPair];
            return ", " + value + " != 0 ? " + quoted(words.notZero) + " : " + quoted(words.zero);
        }
        case Reading::nanoseconds: {
            const std::string time = "(uint64_t)" + value;
            return joined({"(int)(" + time + " / 1000000000)",
                           "(int)(" + time + " / 1000000 % 1000)",
                           "(int)(" + time + " / 1000 % 1000)", "(int)(" + time + " % 1000)"});
        }
        case Reading::fourCharacters:
            return joined({"(char)(" + value + " >> 24)", "(char)(" + value + " >> 16)",
                           "(char)(" + value + " >> 8)", "(char)" + value});
        case Reading::ticks: return ", (double)" + value + " / 24.0";
        case Reading::character: return ", (char)" + value;
        case Reading::seconds:
            return std::string(conversion.kind == ConversionKind::signedDecimal
                                   ? ", (long long)"
                                   : ", (unsigned long long)") +
                   "elapsedSeconds(" + value + ", " + sliced(piece.later) + ')';
    }
    return "";
}

// The text with "0x%llx" for "%p", of which the C library makes "(nil)" where it is zero.
std::string formatOf(const Text& text) {
    std::string format(text.text);
    for (size_t at = 0; (at = format.find('%', at)) != std::string::npos;) {
        if (format[at + 1] == 'p') format.replace(at, 2, "0x%llx");
        at += 2;
    }
    return format;
}

std::string conditionOf(const Text& text) {
    std::string condition;
    switch (text.qualifiers) {
        case kOnStart: condition = "qualifierOf(r) == 1"; break;
        case kOnEnd: condition = "qualifierOf(r) == 2"; break;
        case kOnOther: condition = "qualifierOf(r) % 3 == 0"; break;
        default: condition = "1"; break;
    }
    const Condition& asked = text.condition;
    if (asked.test == Test::always) return condition;
    condition += " && " + sliced(asked.slice);
    return asked.test == Test::equals ? condition + " == " + std::to_string(asked.value)
                                      : condition + " != 0";
}

void printText(const TracedClass& traced, const Text& text) {
    std::string arguments;
    for (const Piece& piece : text.pieces) arguments += argumentsOf(text, piece);
    std::printf(
        "            if (%s) {\n"
        "%s"
        "                if (!printPrefix(&header, %s, %s, %s)) return;\n"
        "                fprintf(stdout, %s%s);\n"
        "                fputc('\\n', stdout);\n"
        "                return;\n"
        "            }\n",
        conditionOf(text).c_str(), text.verbose ? "                if (!verbose) return;\n" : "",
        quoted(text.group).c_str(), quoted(text.method).c_str(),
        traced.decoder->hasObject ? "r->arg1" : "0", quoted(formatOf(text)).c_str(),
        arguments.c_str());
}

void printClass(const TracedClass& traced) {
    std::printf(
        "/* %s */\n"
        "static void decode_%s(const struct Record* r) {\n"
        "    const struct Header header = {r->timestamp, r->arg5, r->debugid, r->cpuid};\n"
        "    switch (r->debugid & ~3U) {\n",
        traced.title().c_str(), traced.id.c_str());
    for (const Event& event : eventsOf(traced)) {
        std::printf("        case %s:\n", spellCode(event.code).c_str());
        for (const Text& text : event.texts) printText(traced, text);
        std::puts("            return;");
    }
    std::puts("        default: printUnclassified(r); return;\n    }\n}\n");
}

}  // namespace

int main() {
    auto classes = tracedClasses();
    std::erase_if(classes, [](const TracedClass& traced) {
        return traced.decoder->gate == Gate::historic;
    });  // no option prints it
    for (const TracedClass& traced : classes) {
        if (!traced.isSilent()) printClass(traced);
    }
    std::puts(
        "static void decodeClass(unsigned key, const struct Record* r) {\n    switch (key) {");
    for (const TracedClass& traced : classes) {
        if (!traced.isSilent()) {
            std::printf("        case %s: decode_%s(r); return;\n",
                        spellCode(traced.decoder->codeBase).c_str(), traced.id.c_str());
        } else {
            std::printf("        case 0x05240000 + (%s << 10): return;\n", traced.id.c_str());
        }
    }
    std::puts("        default: printUnclassified(r); return;\n    }\n}");
    return 0;
}
