// sonaprobe-sim: plays the audio drivers, and other users, of the stand-in trace facility.

#include <cstdio>
#include <string_view>

#include "sim/command.h"
#include "sim/messages.h"
#include "sim/scenarios.h"

namespace {

using namespace sonaprobe::sim;

constexpr Command kCommands[] = {
    {"status", "", "print the state of the trace facility", runStatus},
    {"reset", "", "back to the state after boot", runReset},
    {"post", "FILE", "post the records of a raw file at once", runPost},
    {"play", "SCENARIO [--rate N] [--seconds S] [--threads T] [--seed N]",
     "let simulated drivers post in real time: N records a second (as the scenario goes),\n"
     "        for S seconds (until a signal), from T producers (1)",
     runPlay},
    {"write", "SCENARIO FILE [--records N] [--seed N]",
     "write a scenario into a raw file: N records (once through)", runWrite},
    {"scenarios", "", "list the scenarios", runScenarios},
    {"hold", "", "own the facility, as another tool would, until a signal", runHold},
    {"fail", "OPERATION ERRNO [--times N] [--after N]",
     "make an operation fail: N times (1), after N calls (0)", runFail},
};

void printHelp() {
    std::puts("usage: sonaprobe-sim COMMAND [ARGUMENTS]\n\nCommands:");
    for (const Command& command : kCommands) {
        std::printf("  %s%s%s\n        %s\n", command.name, *command.operands != '\0' ? " " : "",
                    command.operands, command.summary);
    }
    std::puts("  help\n        print this\n\nScenarios:");
    for (const Scenario& scenario : scenarios()) {
        std::printf("  %-12s %s\n", scenario.name, scenario.summary);
    }
    std::puts(
        "\nDropouts whose causes are known:\n"
        "  sonaprobe-sim write dropouts FILE [--cause KIND,...] [--count N] [--level L] [--seed "
        "N]\n"
        "        [--truth FILE]\n"
        "        write a raw file with N dropouts (9) of these kinds (all), easy, medium (the "
        "default)\n"
        "        or hard to explain, and what has caused each into another file, as JSON");
    std::puts(
        "\nThe drivers among the players post while bit 0 of the audio debug flags is set, the "
        "audio\n"
        "server always. The same seed (1) gives the same story.\n\n"
        "OPERATION is KERN_KDENABLE, KERN_KDSETBUF, KERN_KDGETBUF, KERN_KDSETUP, KERN_KDREMOVE,\n"
        "KERN_KDSETREG, KERN_KDREADTR, debug.Audio, debug.Audio.get or debug.Audio.set; ERRNO a\n"
        "name such as EBUSY or a number. To be run as root. Exit status: 0, or 1 after a message.");
}

bool asksForHelp(std::string_view argument) {
    return argument == "--help" || argument == "-h" || argument == "help";
}

int run(Arguments arguments) {
    if (arguments.empty()) {
        complain("a command is missing; see sonaprobe-sim --help");
        return 1;
    }
    const std::string_view name = arguments[0];
    if (asksForHelp(name) || (arguments.size() > 1 && arguments[1] == std::string_view("--help"))) {
        printHelp();
        return 0;
    }
    for (const Command& command : kCommands) {
        if (command.name == name) return command.run(arguments.subspan(1));
    }
    complain("unknown command '%s'; see sonaprobe-sim --help", arguments[0]);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int status = run(Arguments(argv, static_cast<size_t>(argc)).subspan(argc > 0 ? 1 : 0));
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
    complain("cannot write to standard output");
    return 1;
}
