// Writes completion in the language of each shell.

#include <algorithm>
#include <set>

#include "scope/shell_words.h"

namespace sonaprobe::scope {

namespace {

std::string joined(std::span<const std::string> words, const char* between = " ") {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

// In single quotation marks, as all three shells read them.
std::string shellWord(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

std::vector<std::string> namesOf(std::span<const CommandWords> commands) {
    std::vector<std::string> names;
    for (const CommandWords& command : commands) names.push_back(command.name);
    return names;
}

// The kinds of values that have words of their own, each once.
std::set<std::string> kindsOf(std::span<const CommandWords> commands) {
    std::set<std::string> kinds;
    for (const CommandWords& command : commands) {
        for (const OptionWords& option : command.options) kinds.insert(option.value.kind);
        for (const ValueWords& operand : command.operands) kinds.insert(operand.kind);
    }
    std::erase_if(kinds, [](const std::string& kind) { return wordsOfKind(kind).empty(); });
    return kinds;
}

std::vector<std::string> wordsOf(const ValueWords& value) {
    return value.choices.empty() ? wordsOfKind(value.kind) : value.choices;
}

std::string bashReplyOf(const ValueWords& value) {
    if (isPath(value.kind)) return "_filedir";
    const std::vector<std::string> words = wordsOf(value);
    if (words.empty()) return ":";
    return "COMPREPLY=($(compgen -W " + shellWord(joined(words)) + " -- \"$current\"))";
}

}  // namespace

std::string bashCompletion(std::span<const CommandWords> commands) {
    std::string text =
        "# bash completion of sonascope, made by `sonascope completion bash`.\n\n"
        "_sonascope() {\n"
        "    local current previous words cword\n"
        "    _init_completion -n : || return\n"
        "    current=$cur previous=$prev\n"
        "    if [ \"$cword\" -eq 1 ]; then\n"
        "        COMPREPLY=($(compgen -W " +
        shellWord(joined(namesOf(commands)) + " --help --version") +
        " -- \"$current\"))\n"
        "        return\n"
        "    fi\n"
        "    case ${words[1]} in\n";
    for (const CommandWords& command : commands) {
        text += "        " + command.name + ")\n            case $previous in\n";
        std::vector<std::string> names;
        for (const OptionWords& option : command.options) {
            names.insert(names.end(), option.names.begin(), option.names.end());
            if (option.value.kind.empty()) continue;
            text += "                " + joined(option.names, " | ") + ") " +
                    bashReplyOf(option.value) + "; return ;;\n";
        }
        text +=
            "            esac\n            if [[ $current == -* ]]; then\n"
            "                COMPREPLY=($(compgen -W " +
            shellWord(joined(names)) + " -- \"$current\"))\n            else\n                " +
            (command.operands.empty() ? ":" : bashReplyOf(command.operands.front())) +
            "\n            fi\n            ;;\n";
    }
    return text + "    esac\n} && complete -F _sonascope sonascope\n";
}

namespace {

// Descriptions stand in brackets in zsh.
std::string zshHelp(const std::string& help) {
    std::string out;
    for (const char c : help) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
        out += c;
    }
    return out;
}

std::string zshAction(const ValueWords& value) {
    if (isPath(value.kind)) return "_files";
    const std::vector<std::string> words = wordsOf(value);
    return words.empty() ? " " : "(" + joined(words) + ")";
}

}  // namespace

std::string zshCompletion(std::span<const CommandWords> commands) {
    std::string text =
        "#compdef sonascope\n"
        "# zsh completion of sonascope, made by `sonascope completion zsh`.\n\n"
        "_sonascope() {\n"
        "    local -a commands=(\n";
    for (const CommandWords& command : commands) {
        text += "        " + shellWord(command.name + ":" + command.help) + "\n";
    }
    text +=
        "    )\n"
        "    if (( CURRENT == 2 )); then\n"
        "        _describe command commands\n"
        "        _arguments '--help[print this help]' '--version[print the version]'\n"
        "        return\n"
        "    fi\n"
        "    shift words\n"
        "    (( CURRENT-- ))\n"
        "    case $words[1] in\n";
    for (const CommandWords& command : commands) {
        text += "        " + command.name + ")\n            _arguments -s \\\n";
        for (const OptionWords& option : command.options) {
            for (const std::string& name : option.names) {
                const bool isLong = name.starts_with("--");
                std::string argument = "*" + name;
                const bool hasValue = !option.value.kind.empty();
                if (hasValue && isLong) argument += "=";
                argument += "[" + zshHelp(option.help) + "]";
                if (hasValue) {
                    argument += ":" + option.value.kind + ":" + zshAction(option.value);
                }
                text += "                " + shellWord(argument) + " \\\n";
            }
        }
        // The last one may come several times.
        for (size_t i = 0; i < command.operands.size(); ++i) {
            const ValueWords& operand = command.operands[i];
            const bool last = i + 1 == command.operands.size();
            std::string argument = last ? "*" : std::to_string(i + 1);
            argument.append(":").append(operand.kind).append(":").append(zshAction(operand));
            text += "                " + shellWord(argument) + " \\\n";
        }
        text += "                && return\n            ;;\n";
    }
    return text + "    esac\n}\n\n_sonascope \"$@\"\n";
}

std::string fishCompletion(std::span<const CommandWords> commands) {
    std::string text =
        "# fish completion of sonascope, made by `sonascope completion fish`.\n\n"
        "complete -c sonascope -f\n"
        "complete -c sonascope -n __fish_use_subcommand -l help -d 'print this help'\n"
        "complete -c sonascope -n __fish_use_subcommand -l version -d 'print the version'\n";
    for (const std::string& kind : kindsOf(commands)) {
        text += "set -g __sonascope_" + kind + " " + joined(wordsOfKind(kind)) + "\n";
    }
    for (const CommandWords& command : commands) {
        const std::string begin =
            "complete -c sonascope -n '__fish_seen_subcommand_from " + command.name + "'";
        text += "complete -c sonascope -n __fish_use_subcommand -a " + command.name + " -d " +
                shellWord(command.help) + "\n";
        const auto valueOf = [](const ValueWords& value) {
            if (isPath(value.kind)) return std::string(" -F");
            if (!value.choices.empty()) return " -f -a " + shellWord(joined(value.choices));
            if (wordsOfKind(value.kind).empty()) return std::string(" -f");
            return " -f -a \"$__sonascope_" + value.kind + "\"";
        };
        for (const OptionWords& option : command.options) {
            text += begin;
            for (const std::string& name : option.names) {
                const bool isLong = name.starts_with("--");
                text += (isLong ? " -l " : " -s ") + name.substr(isLong ? 2 : 1);
            }
            if (!option.value.kind.empty()) text += " -r" + valueOf(option.value);
            text += " -d " + shellWord(option.help) + "\n";
        }
        for (const ValueWords& operand : command.operands) {
            text += begin + valueOf(operand) + "\n";
        }
    }
    return text;
}

}  // namespace sonaprobe::scope
