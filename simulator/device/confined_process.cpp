#include "simulator/device/confined_process.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace kaz::sim {
namespace {

// Root needs no user namespace. Another user keeps its uid in one, because the bus checks it.
std::vector<std::string> confined(const std::vector<std::string>& command) {
    std::vector<std::string> words = {"unshare", "--net"};
    if (::geteuid() != 0) {
        words.insert(words.end(), {"--map-current-user", "--keep-caps"});
    }
    words.emplace_back("--");
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

std::vector<std::string> environmentWith(std::map<std::string, std::string> variables) {
    const char* const path = ::getenv("PATH");
    variables["PATH"] = std::string(path == nullptr ? "/usr/bin:/bin" : path) + ":/usr/sbin:/sbin";
    std::vector<std::string> lines;
    for (char** line = environ; *line != nullptr; ++line) {
        const std::string text = *line;
        if (!variables.contains(text.substr(0, text.find('=')))) {
            lines.push_back(text);
        }
    }
    for (const auto& [name, value] : variables) {
        lines.push_back(std::string(name).append(1, '=').append(value));
    }
    return lines;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    std::transform(texts.begin(), texts.end(), std::back_inserter(pointers),
                   [](auto& text) { return text.data(); });
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

pid_t startConfined(const std::vector<std::string>& command,
                    const std::map<std::string, std::string>& variables) {
    // Prepare everything before the fork: afterwards only functions that are safe in a signal handler may be
    // called.
    auto words = confined(command);
    auto lines = environmentWith(variables);
    const auto arguments = pointersTo(words);
    const auto environment = pointersTo(lines);
    sigset_t none;
    ::sigemptyset(&none);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(126);
        }
        ::setsid();
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execvpe(arguments.front(), arguments.data(), environment.data());
        ::_exit(127);
    }
    return child;
}

}  // namespace kaz::sim
