#include "base/program.h"
#include "base/temporary_folder.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "simulator/world/neighbourhood_json.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <string_view>

namespace kaz::sim {
namespace {

struct Arguments {
    std::string neighbourhood;
    std::string bus;
    std::string configFile;
    std::vector<std::string> command;
    double timeScale = 1.0;
    bool realSupplicant = false;
};

sigset_t handledSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    ::sigaddset(&signals, SIGCHLD);
    return signals;
}

int waitForSignal() {
    const sigset_t signals = handledSignals();
    int signal = 0;
    while (::sigwait(&signals, &signal) != 0 || signal == SIGCHLD) {
    }
    return 0;
}

// A SIGINT from the terminal also reaches the command, which decides what to do.
int waitForChild(pid_t child) {
    const sigset_t signals = handledSignals();
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        int signal = 0;
        if (::sigwait(&signals, &signal) == 0 && signal == SIGTERM) {
            ::kill(child, SIGTERM);
        }
    }
    return exitStatus(status);
}

// The file in which the command keeps the user's on/off choice, and the folder that it takes for the root of the device,
// unless the caller has set them. The radio of this machine is not the device's.
void keepConfigurationIn(const TemporaryFolder& folder) {
    constexpr int keepExisting = 0;
    ::setenv("KAZ_CONFIG_FILE", (folder / "kaz.conf").c_str(), keepExisting);
    ::setenv("KAZ_DEVICE_ROOT", folder.path().c_str(), keepExisting);
}

int run(const Arguments& arguments) {
    const sigset_t signals = handledSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::optional<PrivateBus> bus;
    if (arguments.bus.empty()) {
        bus.emplace();
    }
    const std::string address = bus ? bus->address() : arguments.bus;
    SimulatedDevice::Options options{.busAddress = address,
                                     .neighbourhood = {},
                                     .timeScale = arguments.timeScale,
                                     .configFile = arguments.configFile,
                                     .realSupplicant = arguments.realSupplicant};
    if (!arguments.neighbourhood.empty()) {
        options.neighbourhood = readNeighbourhood(arguments.neighbourhood);
    }
    const SimulatedDevice device(std::move(options));
    if (arguments.command.empty()) {
        std::cout << address << std::endl;  // readers wait for this line
        return waitForSignal();
    }
    const TemporaryFolder folder("kaz-device-");
    keepConfigurationIn(folder);
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    return waitForChild(startProgram({.command = arguments.command, .deathSignal = SIGTERM}));
}

}  // namespace
}  // namespace kaz::sim

int main(int argc, char** argv) {
    kaz::sim::Arguments arguments;
    CLI::App app("A simulated device: systemd, networkd and wpa_supplicant on a message bus.",
                 "kaz-device-sim");
    app.add_option("--neighbourhood", arguments.neighbourhood, "JSON file with the access points in range")
        ->check(CLI::ExistingFile);
    app.add_option("--time-scale", arguments.timeScale,
                   "factor on all simulated times; 0.01 is 100 times faster")
        ->check(CLI::Validator(
            [](const std::string& text) {
                double factor = 0;
                return CLI::detail::lexical_cast(text, factor) && factor > 0 ? ""
                                                                             : "must be a number above 0";
            },
            "FACTOR"));
    app.add_option("--bus", arguments.bus, "address of the bus to use instead of starting one");
    app.add_option("--config-file", arguments.configFile, "the supplicant's configuration file");
    app.add_flag("--real-supplicant", arguments.realSupplicant,
                 "run the wpa_supplicant daemon on a separate wired network instead of simulating it");
    app.add_option("--exec", arguments.command,
                   "run this command with all arguments that follow, and exit when it ends")
        ->expected(1, -1);
    app.footer("Without --exec, prints the address of the bus and runs until SIGTERM or SIGINT.");
    // Everything after --exec belongs to the command, even if it looks like one of our options.
    char** const end = argv + argc;
    char** const exec = std::find(argv, end, std::string_view("--exec"));
    CLI11_PARSE(app, static_cast<int>((exec + 1 == end ? end : exec) - argv), argv);
    if (exec != end) {
        arguments.command.assign(exec + 1, end);
    }
    try {
        return kaz::sim::run(arguments);
    } catch (const std::exception& error) {
        std::cerr << "kaz-device-sim: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
