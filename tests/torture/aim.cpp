// Sends a signal at an exact moment: torture-aim SIGNAL CALLS STEPS PROGRAM ARGUMENT... runs a
// program and sends it the signal so many returns of system calls after it has set up its handler,
// and so many instructions later. Ends with the status of the program, or 125 if it may not trace.

#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kUnable = 125;
constexpr int kSystemCall = SIGTRAP | 0x80;  // what a stop at one shows

struct Program {
    pid_t id = 0;
    int status = 0;

    bool isStopped() const { return WIFSTOPPED(status); }
    bool isAtSystemCall() const { return isStopped() && WSTOPSIG(status) == kSystemCall; }

    // Runs to the next stop; a signal that stopped it is passed on.
    void runTo(__ptrace_request stop) {
        const int signal = WSTOPSIG(status);
        const bool foreign = signal != SIGTRAP && signal != kSystemCall;
        ptrace(stop, id, nullptr, foreign ? signal : 0);
        waitpid(id, &status, 0);
    }
};

[[noreturn]] void becomeTraced(char** command) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) execv(*command, command);
    _exit(kUnable);
}

__ptrace_syscall_info systemCall(const Program& program) {
    __ptrace_syscall_info info{};
    ptrace(PTRACE_GET_SYSCALL_INFO, program.id, sizeof info, &info);
    return info;
}

// Runs to so many returns of system calls after the call that sets up the handler.
void runToReturn(Program& program, int signal, unsigned long calls) {
    bool counting = false;
    while (program.isStopped()) {
        program.runTo(PTRACE_SYSCALL);
        if (!program.isAtSystemCall()) continue;
        const auto call = systemCall(program);
        if (call.op == PTRACE_SYSCALL_INFO_ENTRY && call.entry.nr == SYS_rt_sigaction &&
            call.entry.args[0] == static_cast<unsigned long>(signal)) {
            counting = true;
        } else if (call.op == PTRACE_SYSCALL_INFO_EXIT && counting && calls-- == 0) {
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) return kUnable;
    const int signal = std::atoi(argv[1]);
    const unsigned long calls = std::strtoul(argv[2], nullptr, 10);
    Program program{.id = fork()};
    if (program.id == 0) becomeTraced(argv + 4);
    waitpid(program.id, &program.status, 0);
    ptrace(PTRACE_SETOPTIONS, program.id, nullptr, PTRACE_O_TRACESYSGOOD);

    runToReturn(program, signal, calls);
    for (unsigned long steps = std::strtoul(argv[3], nullptr, 10); steps > 0; --steps) {
        if (program.isStopped()) program.runTo(PTRACE_SINGLESTEP);
    }
    if (program.isStopped()) {
        ptrace(PTRACE_DETACH, program.id, nullptr, signal);
        waitpid(program.id, &program.status, 0);
    }
    return WIFEXITED(program.status) ? WEXITSTATUS(program.status) : 128 + WTERMSIG(program.status);
}
