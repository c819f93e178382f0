#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/temporary_folder.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "simulator/world/neighbourhood.h"
#include "support/files/files.h"
#include "support/process/running_program.h"

namespace kaz::test {

inline bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Throws when it is not shown, which ends the test.
void waitFor(RunningProgram& program, const std::string& text);

// Types each first text, then waits for the second one.
void converse(RunningProgram& program, const std::vector<std::pair<std::string, std::string>>& turns);

// The result of a finished run of kazwifictl.
struct Finished {
    Ending ending;
    std::string out;
    std::string err;
};

// Runs the program kazwifictl on a simulated device.
class CommandFixture : public ::testing::Test {
  protected:
    CommandFixture();

    // Change these before start().
    sim::Neighbourhood neighbourhood;
    double timeScale = 0.02;

    // Starts the device.
    void start();
    // ... and scans, so that its networks are listed.
    void startAndScan();
    sim::SimulatedDevice& device() { return *device_; }

    Finished run(const std::vector<std::string>& arguments, const std::string& input = {});
    // Also expects that the run ended with `status`.
    Finished runs(int status, const std::vector<std::string>& arguments, const std::string& input = {});
    std::unique_ptr<RunningProgram> inTerminal(const std::vector<std::string>& arguments,
                                               unsigned short columns = 80);
    std::unique_ptr<RunningProgram> withPipes(const std::vector<std::string>& arguments);

    // Adds a network to the supplicant's configuration, as if saved before the start.
    void save(const std::string& ssid, const std::string& password);

    // Connects to "Home", and fails the test when that fails.
    void connectHome();

    bool wasCalled(const std::string& member) const;
    // The supplicant's configuration file.
    std::string savedConfiguration() const;
    std::filesystem::path file(const std::string& name) const { return folder_ / name; }

    // The environment variables of every run; an empty value removes a variable.
    Environment environment;

  private:
    std::vector<std::string> command(const std::vector<std::string>& arguments) const;

    TemporaryFolder folder_;
    sim::PrivateBus bus_;
    std::unique_ptr<sim::SimulatedDevice> device_;
};

sim::AccessPoint accessPoint(const std::string& ssid, sim::Security security, std::int16_t signal,
                             const std::string& password = {});

}  // namespace kaz::test
