#include "simulation.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "ssid_text.h"

namespace kaz::ctl {
namespace {

namespace fs = std::filesystem;

constexpr const char* program = "kaz-device-sim";

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

fs::path thisProgram() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

std::vector<fs::path> places() {
    const fs::path here = thisProgram().parent_path();
    // Beside it; as installed; as built (tools/kazwifictl and simulator in one build folder).
    std::vector<fs::path> result{here, here / "../libexec/kazwifi", here / "../libexec",
                                 here / "../../simulator"};
    const char* path = ::getenv("PATH");
    std::string rest = path == nullptr ? "" : path;
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        result.emplace_back(rest.substr(0, colon));
        rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
    }
    return result;
}

std::vector<std::string> withoutSimulate(const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    std::copy_if(arguments.begin(), end, std::back_inserter(result), [](const std::string& argument) {
        return argument != "--simulate" && argument.rfind("--simulate=", 0) != 0;
    });
    result.insert(result.end(), end, arguments.end());
    return result;
}

}  // namespace

std::optional<std::string> findSimulator() {
    for (const fs::path& place : places()) {
        const fs::path candidate = place / program;
        if (isProgram(candidate)) {
            return candidate.lexically_normal().string();
        }
    }
    return std::nullopt;
}

Failure runSimulated(const std::string& neighbourhood, const std::vector<std::string>& arguments) {
    const std::string what = "cannot simulate a device";
    const auto simulator = findSimulator();
    if (!simulator) {
        return {ExitCode::failed, what, "the program kaz-device-sim is not installed",
                "to install it beside kazwifictl"};
    }
    std::vector<std::string> words{*simulator};
    if (!neighbourhood.empty()) {
        words.insert(words.end(), {"--neighbourhood", neighbourhood});
    }
    words.insert(words.end(), {"--exec", thisProgram().string()});
    const std::vector<std::string> rest = withoutSimulate(arguments);
    words.insert(words.end(), rest.begin(), rest.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    ::execv(simulator->c_str(), argv.data());
    return {ExitCode::failed,
            what,
            harmless(*simulator, true) + ": " + std::generic_category().message(errno),
            {}};
}

}  // namespace kaz::ctl
