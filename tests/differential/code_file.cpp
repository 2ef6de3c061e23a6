// A code-name file with every kind of line, and the plain way to look a name up in it.

#include "code_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace sonaprobe::differential {

namespace {

constexpr uint32_t kNamedCodes[] = {
    0,          0x01300004, 0x01300008, 0x0130000C, 0x01300010, 0x01300014,
    0x01300018, 0x0130001C, 0x01300020, 0x01300024, 0x01300028, 0x21040000,
    0x21040400, 0x05245C0C, 0x05243014, 0x05240800, 0xFFFFFFFC, 0xDEADBEEC,
};

// Codes as octal, decimal and hexadecimal numbers; names with blanks within and around; lines
// without name, without number, empty, of two codes, and longer than a lookup reads at once.
constexpr std::string_view kLines =
    "0x01300004\tVM_fault\n"
    "0x01300008 Page fault\n"
    "0x0130000C \t  DBG_behind_blanks\n"
    "19922960 decimal\n"
    "0114000024\toctal\n"
    "0x01300018\n"
    "0x0130001C \n"
    "\n"
    "words without a number\n"
    "0x01300020 the name of this one is longer than the sixty-three characters of a piece\n"
    "0x01300024 cut_at_the_end_of_the_piece_of_63_characters_is_this_name_0x01300028 rest\n"
    "0x01300028 found_by_its_own_line\n"
    "0x01300028 never_found\n"
    "0x121040000 a_code_of_33_bits\n"
    "0x21040000 HAL\n"
    "0x21040400\tnear HAL\n"
    "0x05245C0C path_enable\n"
    "0x05243014 class_12\n"
    "0x05240800\tsilent_class\n"
    "0xFFFFFFFC last 100% of \\n it\n"
    "\t0xDEADBEEC leading_tab\n"
    "0xDEADBEEC no_line_end";

}  // namespace

std::string_view codeFileText() { return kLines; }

std::span<const uint32_t> namedCodes() { return kNamedCodes; }

std::optional<std::string> scanForName(uint32_t code) {
    std::string text(kLines);
    std::FILE* const file = fmemopen(text.data(), text.size(), "r");
    std::optional<std::string> found;
    char line[64];
    while (!found && std::fgets(line, sizeof line, file) != nullptr) {
        char* rest = line;
        if (std::strtoul(strsep(&rest, "\t "), nullptr, 0) != code) continue;
        if (rest == nullptr) {
            found = "";
            continue;
        }
        const char* begin = rest;
        for (char* at = rest; *at != '\0'; ++at) {
            if (*at == '\n') {
                *at = '\0';
                break;
            }
            if (*at == '\t' || *at == ' ') ++begin;
        }
        found = begin;
    }
    std::fclose(file);
    return found;
}

}  // namespace sonaprobe::differential
