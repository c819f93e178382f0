#pragma once

#include "base/non_copyable.h"
#include "base/temporary_folder.h"
#include "simulator/bus/connection.h"
#include "simulator/device/service_process.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace kaz::sim {

// The wpa_supplicant daemon of this machine, with its wired driver on one end of a veth pair, in a separate
// network namespace that ends with the daemon. The daemon is killed when this object, its thread or the process ends.
// Needs root, or a kernel that allows user namespaces.
class RealService : public ServiceProcess, NonCopyable {
  public:
    // The daemon reads and saves its configuration in this file, which is created if it is missing. Without a
    // name, the file is in a temporary folder. `linkChanged` is called when the daemon's State becomes or
    // leaves "completed".
    RealService(const Environment& environment, std::filesystem::path configFile,
                std::function<void(bool up)> linkChanged);
    ~RealService() override;

    void start(std::function<void()> ready) override;
    void stop(std::function<void()> gone) override;
    void kill() override;

  private:
    void launch();
    void ended(bool cleanly);
    template <void (RealService::*Handle)(sd_bus_message*)>
    static int handler(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    Slot hear(const char* sender, const char* interface, const char* member,
              sd_bus_message_handler_t callback);
    void nameOwnerChanged(sd_bus_message* signal);
    void propertiesChanged(sd_bus_message* signal);

    const Environment& environment_;
    std::optional<TemporaryFolder> folder_;  // only if the caller names no file
    std::filesystem::path configFile_;
    std::function<void(bool)> linkChanged_;
    Connection connection_;
    Slot ownerMatch_;
    Slot propertiesMatch_;
    pid_t process_ = -1;
    EventSource end_;
    Timer impatience_;
    std::function<void()> ready_;
    std::function<void()> gone_;
};

}  // namespace kaz::sim
