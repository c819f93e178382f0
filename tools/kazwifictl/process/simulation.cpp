#include "kazwifictl/process/simulation.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include "base/errno_text.h"
#include "base/pipe.h"
#include "base/program.h"
#include "kazwifictl/process/default_neighbourhood.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

namespace fs = std::filesystem;

constexpr const char* what = "cannot simulate a device";

// Where kaz-device-sim may be: beside kazwifictl, where it is installed, where it is built, and in PATH.
std::vector<fs::path> places() {
    std::error_code error;
    const fs::path here = fs::read_symlink("/proc/self/exe", error).parent_path();
    std::vector<fs::path> result{here, here / "../libexec/kazwifi", here / "../../simulator/program"};
    const char* path = ::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        result.emplace_back(folder);
    }
    return result;
}

std::string findSimulator() {
    for (const fs::path& place : places()) {
        const fs::path candidate = place / "kaz-device-sim";
        std::error_code error;
        if (fs::is_regular_file(candidate, error) && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate.lexically_normal().string();
        }
    }
    throw CommandFailed({ExitCode::failed, what, "the program kaz-device-sim is not installed",
                         "installing it beside kazwifictl"});
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

std::string firstLineFrom(int fd) {
    std::string line;
    char letter = 0;
    while (::read(fd, &letter, 1) == 1 && letter != '\n') {
        line += letter;
    }
    return letter == '\n' ? line : std::string();
}

}  // namespace

Simulation::Simulation(const std::string& neighbourhood) : Simulation() {
    const std::string program = findSimulator();
    makeFolder(folder_);
    std::string file = neighbourhood;
    if (file.empty()) {
        file = *folder_ / "neighbourhood.json";
        std::ofstream(file) << defaultNeighbourhood;
    } else if (::access(file.c_str(), R_OK) != 0) {
        throw CommandFailed({ExitCode::failed, what, harmless(file, true) + ": " + errnoText(errno),
                             "--simulate without a file, which uses the built-in neighbourhood"});
    }
    start(program, file);
}

void Simulation::start(const std::string& program, const std::string& neighbourhood) {
    Pipe told;
    // In a session of its own, so that Ctrl-C does not reach it: the command may still need its device.
    simulator_ = startProgram({.command = {program, "--neighbourhood", neighbourhood},
                               .output = told.writing.get(),
                               .deathSignal = SIGTERM,
                               .newSession = true});
    told.writing = FileDescriptor();
    const std::string address = firstLineFrom(told.reading.get());
    if (address.empty()) {
        throw CommandFailed({ExitCode::failed, what, "kaz-device-sim does not start",
                             "starting it alone: kaz-device-sim --neighbourhood FILE"});
    }
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    ::setenv("KAZ_CONFIG_FILE", (*folder_ / "kaz.conf").c_str(), 1);
    ::setenv("KAZ_DEVICE_ROOT", folder_->path().c_str(), 1);
}

Simulation::~Simulation() {
    if (simulator_ > 0) {
        ::kill(simulator_, SIGTERM);
        ::waitpid(simulator_, nullptr, 0);
    }
}

}  // namespace kaz::ctl
