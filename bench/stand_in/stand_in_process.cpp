#include "bench/stand_in/stand_in_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace kaz::bench {
namespace {

void require(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(what);
    }
}

}  // namespace

OpenBus connectTo(const std::string& address) {
    sd_bus* bus = nullptr;
    require(sd_bus_new(&bus) >= 0, "no memory for a connection");
    OpenBus owned(bus);
    require(sd_bus_set_address(bus, address.c_str()) >= 0 && sd_bus_set_bus_client(bus, 1) >= 0 &&
                sd_bus_start(bus) >= 0,
            "cannot connect to the bus");
    return owned;
}

StandInProcess::StandInProcess(const std::string& busAddress) : bus_(connectTo(busAddress)) {
    std::array<int, 2> ready{};
    require(::pipe2(ready.data(), O_CLOEXEC) == 0, "no pipe");
    std::string program = KAZ_STAND_IN;
    std::string address = busAddress;
    const std::array<char*, 3> arguments{program.data(), address.data(), nullptr};
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ready[1], STDOUT_FILENO);
    const int failed =
        ::posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ready[1]);
    char answer = 0;
    const bool started = failed == 0 && ::read(ready[0], &answer, 1) == 1;
    ::close(ready[0]);
    require(started, "the stand-in did not start");
}

StandInProcess::~StandInProcess() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

std::vector<std::string> StandInProcess::bssPaths(std::size_t count) {
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < count; ++i) {
        paths.push_back("/fi/w1/wpa_supplicant1/Interfaces/0/BSSs/" + std::to_string(i));
    }
    return paths;
}

void StandInProcess::order(const char* member, const char* type, std::uint32_t value) {
    require(sd_bus_call_method(bus_.get(), "fi.w1.wpa_supplicant1", "/", "com.kazwifi.Bench1", member,
                               nullptr, nullptr, type, value) >= 0,
            "the stand-in did not obey");
}

}  // namespace kaz::bench
