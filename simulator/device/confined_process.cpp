#include "simulator/device/confined_process.h"

#include "base/program.h"

#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

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

}  // namespace

pid_t startConfined(const std::vector<std::string>& command,
                    const std::map<std::string, std::string>& variables) {
    return startProgram({.command = confined(command),
                         .environment = environmentWith(variables),
                         .deathSignal = SIGKILL,
                         .newSession = true});
}

}  // namespace kaz::sim
