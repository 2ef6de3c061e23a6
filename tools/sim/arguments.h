// Reads a subcommand's arguments: operands, and options that take a number.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "sim/command.h"

namespace sonaprobe::sim {

// "--name N" or "--name=N", N from least to most, decimal or after 0x hexadecimal. A value keeps
// what it held before where the option is not given.
struct NumberOption {
    std::string_view name;  // without the dashes
    uint64_t* value;
    uint64_t least;
    uint64_t most;
};

// "--name TEXT" or "--name=TEXT".
struct TextOption {
    std::string_view name;  // without the dashes
    const char** value;
};

// An argument that must be there.
struct Operand {
    const char* name;  // for the message when it is missing
    const char** value;
};

// Options and operands may come in any order; after "--" come operands alone. False when something
// is missing, unknown, out of range or too much, which has then been said.
bool readArguments(Arguments arguments, std::span<const Operand> operands,
                   std::span<const NumberOption> numbers, std::span<const TextOption> texts = {});

bool parseNumber(std::string_view text, uint64_t& value);

}  // namespace sonaprobe::sim
