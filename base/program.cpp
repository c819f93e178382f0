#include "base/program.h"

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/checked.h"

namespace kaz {
namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

void setUp(const Program& program) {
    if (program.output >= 0) {
        ::dup2(program.output, STDOUT_FILENO);
    }
    if (program.error >= 0) {
        ::dup2(program.error, STDERR_FILENO);
    }
    if (program.inherited >= 0) {
        ::fcntl(program.inherited, F_SETFD, 0);
    }
    if (program.newSession) {
        ::setsid();
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace

pid_t startProgram(const Program& program) {
    // Allocate everything before the fork: afterwards only functions that are safe in a signal handler may be called.
    auto words = program.command;
    auto lines = program.environment.value_or(std::vector<std::string>());
    const auto arguments = pointersTo(words);
    const auto variables = pointersTo(lines);
    char* const* const environment = program.environment ? variables.data() : environ;
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        throwErrno("fork");
    }
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, program.deathSignal);
        if (program.deathSignal != 0 && ::getppid() != parent) {
            ::_exit(126);  // the parent died before the line above
        }
        setUp(program);
        ::execvpe(arguments.front(), arguments.data(), environment);
        ::perror(arguments.front());
        ::_exit(127);
    }
    return child;
}

int exitStatus(int waitStatus) {
    constexpr int signalBase = 128;
    return WIFSIGNALED(waitStatus) ? signalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

}  // namespace kaz
