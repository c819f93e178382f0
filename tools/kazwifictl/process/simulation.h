#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "base/non_copyable.h"
#include "base/temporary_folder.h"

namespace kaz::ctl {

// A simulated device that is this process's own: until the end of this object, or of the process however it
// ends, the system bus and the configuration file of this process are those of the simulation.
class Simulation : NonCopyable {
  public:
    // `neighbourhood` is a file that tells what the device finds around it; empty: a flat in town. Returns
    // when the device is there. Before any thread is started. Throws CommandFailed.
    explicit Simulation(const std::string& neighbourhood);
    ~Simulation();

  private:
    Simulation() = default;  // complete, so that what fails later is cleaned up
    void start(const std::string& program, const std::string& neighbourhood);

    std::optional<TemporaryFolder> folder_;
    pid_t simulator_ = -1;
};

// The program of the simulated device: beside this one or in the build folder that it lies in, in a libexec
// folder, or in PATH. Nothing when it is nowhere.
std::optional<std::string> findSimulator();

}  // namespace kaz::ctl
