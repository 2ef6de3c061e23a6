// sonascope completion: the completion of a shell, made from the command line's own tables.

#include <memory>

#include "scope/command.h"
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

Status run(const Shell& shell) {
    Output out({.noPager = true});
    out.write(shell.completion(commandWords()));
    out.finish();
    return Status::done;
}

}  // namespace

Run setUpCompletion(CLI::App& app) {
    const auto chosen = std::make_shared<const Shell*>();
    std::vector<std::string> names;
    for (const Shell& shell : kShells) names.emplace_back(shell.name);
    require(addChoice(app, "SHELL", "", "the shell", names,
                      [chosen](size_t shell) { *chosen = &kShells[shell]; }));
    addExamples(app, "  source <(sonascope completion bash)\n");
    return [chosen] { return run(**chosen); };
}

}  // namespace sonaprobe::scope
