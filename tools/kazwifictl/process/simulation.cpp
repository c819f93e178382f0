#include "kazwifictl/process/simulation.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include "base/errno_text.h"
#include "base/pipe.h"
#include "kazwifictl/process/default_neighbourhood.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

namespace fs = std::filesystem;

constexpr const char* what = "cannot simulate a device";

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<fs::path> places() {
    std::error_code error;
    const fs::path here = fs::read_symlink("/proc/self/exe", error).parent_path();
    // Beside kazwifictl; where it is installed; where it is built.
    std::vector<fs::path> result{here, here / "../libexec/kazwifi", here / "../../simulator/program"};
    const char* path = ::getenv("PATH");
    std::string rest = path == nullptr ? "" : path;
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        result.emplace_back(rest.substr(0, colon));
        rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
    }
    return result;
}

void makeFolder(std::optional<TemporaryFolder>& folder) {
    try {
        folder.emplace("kazwifictl-");
    } catch (const std::system_error& error) {
        throw CommandFailed({ExitCode::failed, what,
                             "cannot make a temporary folder: " + errnoText(error.code().value()),
                             "setting TMPDIR to a writable folder"});
    }
}

[[noreturn]] void become(const std::string& program, const std::string& neighbourhood, int output) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    ::setpgid(0, 0);  // Ctrl-C must not reach the simulator: the command may still need its device
    ::dup2(output, STDOUT_FILENO);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execl(program.c_str(), program.c_str(), "--neighbourhood", neighbourhood.c_str(), nullptr);
    ::_exit(127);
}

std::string firstLineFrom(int fd) {
    std::string line;
    char letter = 0;
    while (::read(fd, &letter, 1) == 1 && letter != '\n') {
        line += letter;
    }
    return letter == '\n' ? line : std::string();
}

}  // namespace

std::optional<std::string> findSimulator() {
    for (const fs::path& place : places()) {
        const fs::path candidate = place / "kaz-device-sim";
        if (isProgram(candidate)) {
            return candidate.lexically_normal().string();
        }
    }
    return std::nullopt;
}

Simulation::Simulation(const std::string& neighbourhood) : Simulation() {
    const auto program = findSimulator();
    if (!program) {
        throw CommandFailed({ExitCode::failed, what, "the program kaz-device-sim is not installed",
                             "installing it beside kazwifictl"});
    }
    makeFolder(folder_);
    std::string file = neighbourhood;
    if (file.empty()) {
        file = *folder_ / "neighbourhood.json";
        std::ofstream(file) << defaultNeighbourhood;
    } else if (::access(file.c_str(), R_OK) != 0) {
        throw CommandFailed({ExitCode::failed, what, harmless(file, true) + ": " + errnoText(errno),
                             "--simulate without a file, which uses the built-in neighbourhood"});
    }
    start(*program, file);
}

void Simulation::start(const std::string& program, const std::string& neighbourhood) {
    Pipe told;
    simulator_ = ::fork();
    if (simulator_ == 0) {
        become(program, neighbourhood, told.writing.get());
    }
    told.writing = FileDescriptor();
    const std::string address = firstLineFrom(told.reading.get());
    if (address.empty()) {
        throw CommandFailed({ExitCode::failed, what, "kaz-device-sim does not start",
                             "starting it alone: kaz-device-sim --neighbourhood FILE"});
    }
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    ::setenv("KAZ_CONFIG_FILE", (*folder_ / "kaz.conf").c_str(), 1);
}

Simulation::~Simulation() {
    if (simulator_ > 0) {
        ::kill(simulator_, SIGTERM);
        ::waitpid(simulator_, nullptr, 0);
    }
}

}  // namespace kaz::ctl
