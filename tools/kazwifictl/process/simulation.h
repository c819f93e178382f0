#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "base/non_copyable.h"
#include "base/temporary_folder.h"

namespace kaz::ctl {

// Runs a simulated device for this process. Sets the process's system bus address and configuration file to
// those of the simulation. The simulator ends with this object, or with the process, even if that is killed.
class Simulation : NonCopyable {
  public:
    // `neighbourhood` is a JSON file with the networks around the device; empty: the built-in one. Returns when
    // the device runs. Must be called before any thread is started. Throws CommandFailed.
    explicit Simulation(const std::string& neighbourhood);
    ~Simulation();

  private:
    Simulation() = default;  // delegated to: then the destructor also runs when the other constructor throws
    void start(const std::string& program, const std::string& neighbourhood);

    std::optional<TemporaryFolder> folder_;
    pid_t simulator_ = -1;
};

}  // namespace kaz::ctl
