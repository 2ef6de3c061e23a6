// Reads operands and number options.

#include "sim/arguments.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <string>

#include "sim/messages.h"

namespace sonaprobe::sim {
namespace {

constexpr std::string_view kDashes = "--";

int lengthOf(std::string_view text) { return static_cast<int>(text.size()); }

bool readNumber(const NumberOption& option, const char* text) {
    uint64_t number = 0;
    if (text != nullptr && parseNumber(text, number) && option.least <= number &&
        number <= option.most) {
        *option.value = number;
        return true;
    }
    const std::string found =
        text != nullptr ? "not '" + std::string(text) + "'" : "and none follows";
    complain("--%.*s takes a number from %" PRIu64 " to %" PRIu64 ", %s", lengthOf(option.name),
             option.name.data(), option.least, option.most, found.c_str());
    return false;
}

bool readText(const TextOption& option, const char* text) {
    if (text == nullptr)
        complain("--%.*s takes a text, and none follows", lengthOf(option.name),
                 option.name.data());
    *option.value = text;
    return text != nullptr;
}

// The option of that name, with its dashes.
template <typename Option>
const Option* findOption(std::span<const Option> options, std::string_view given) {
    const auto option = std::ranges::find_if(options, [&](const Option& known) {
        return given.starts_with(kDashes) && given.substr(kDashes.size()) == known.name;
    });
    return option == options.end() ? nullptr : &*option;
}

}  // namespace

bool parseNumber(std::string_view text, uint64_t& value) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
    return error == std::errc{} && stop == end;
}

bool readArguments(Arguments arguments, std::span<const Operand> operands,
                   std::span<const NumberOption> numbers, std::span<const TextOption> texts) {
    size_t found = 0;
    bool optionsOver = false;
    for (size_t i = 0; i < arguments.size(); i++) {
        const std::string_view argument = arguments[i];
        if (!optionsOver && argument == kDashes) {
            optionsOver = true;
        } else if (!optionsOver && argument.starts_with('-') && argument != "-") {
            const size_t equals = argument.find('=');
            const std::string_view given = argument.substr(0, equals);
            const NumberOption* const number = findOption(numbers, given);
            const TextOption* const text = findOption(texts, given);
            if (number == nullptr && text == nullptr) {
                complain("unknown option '%.*s'; see sonaprobe-sim --help", lengthOf(given),
                         given.data());
                return false;
            }
            const char* value = nullptr;
            if (equals != std::string_view::npos) {
                value = arguments[i] + equals + 1;
            } else if (i + 1 < arguments.size()) {
                value = arguments[++i];
            }
            if (!(number != nullptr ? readNumber(*number, value) : readText(*text, value)))
                return false;
        } else if (found < operands.size()) {
            *operands[found++].value = arguments[i];
        } else {
            complain("one argument too many: '%s'; see sonaprobe-sim --help", arguments[i]);
            return false;
        }
    }
    if (found < operands.size()) {
        complain("%s is missing; see sonaprobe-sim --help", operands[found].name);
    }
    return found == operands.size();
}

}  // namespace sonaprobe::sim
