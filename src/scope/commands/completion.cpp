// sonascope completion: the completion of a shell, made from the command line's own tables.

#include "scope/command.h"
#include "scope/failure.h"
#include "scope/options.h"
#include "scope/output.h"
#include "scope/shell_words.h"

namespace sonaprobe::scope {

namespace {

struct Shell {
    const char* name;
    std::string (*completion)(std::span<const CommandWords> commands);
};
constexpr Shell kShells[] = {
    {"bash", bashCompletion}, {"fish", fishCompletion}, {"zsh", zshCompletion}};

Status run(const std::string& name) {
    for (const Shell& shell : kShells) {
        if (name != shell.name) continue;
        Output out({.noPager = true});
        out.write(shell.completion(commandWords()));
        out.finish();
        return Status::done;
    }
    throw Failure{"no completion for '" + name + "'; there is one for bash, fish and zsh"};
}

}  // namespace

Run setUpCompletion(CLI::App& app) {
    const auto shell = std::make_shared<std::string>();
    app.add_option("SHELL", *shell, "bash, fish or zsh")->required();
    addExamples(app, "  source <(sonascope completion bash)\n");
    return [shell] { return run(*shell); };
}

}  // namespace sonaprobe::scope
