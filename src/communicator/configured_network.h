#pragma once

#include "communicator/dbus_communicator.h"

#include <kaz/dbus/opath.h>

#include <optional>
#include <string>

namespace kaz::wifi {

// A network object of the supplicant.
class DbusCommunicator::ConfiguredNetwork final : public Communicator::ConfiguredNetwork {
  public:
    ConfiguredNetwork(DbusCommunicator& owner, dbus::OPath path, std::optional<std::string> ssid);

    std::size_t id() override;
    const std::optional<std::string>& getSsid() override;
    bool removeSync() override;
    bool selectSync() override;
    bool setEnabledSync(bool enabled) override;
    bool setPrioritySync(int priority) override;

  private:
    DbusCommunicator& owner_;
    dbus::OPath path_;
    std::optional<std::string> ssid_;
};

}  // namespace kaz::wifi
