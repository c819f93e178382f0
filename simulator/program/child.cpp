#include "simulator/program/child.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <system_error>

namespace kaz::sim {

pid_t startChild(const std::vector<std::string>& command) {
    auto words = command;
    std::vector<char*> arguments;
    std::transform(words.begin(), words.end(), std::back_inserter(arguments),
                   [](auto& word) { return word.data(); });
    arguments.push_back(nullptr);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent) {
            ::_exit(126);
        }
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execvp(arguments.front(), arguments.data());
        ::perror(arguments.front());
        ::_exit(127);
    }
    return child;
}

int exitStatus(int waitStatus) {
    constexpr int signalBase = 128;
    return WIFSIGNALED(waitStatus) ? signalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

}  // namespace kaz::sim
