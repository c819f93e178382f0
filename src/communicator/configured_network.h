#pragma once

#include "communicator/communicator.h"

#include <kaz/dbus/opath.h>

#include <cstddef>
#include <optional>
#include <string>

namespace kaz::wifi {

class ConfiguredNetworks;

// One network in the supplicant's configuration.
class ConfiguredNetwork final : public Communicator::ConfiguredNetwork {
  public:
    ConfiguredNetwork(ConfiguredNetworks& networks, dbus::OPath path, std::optional<std::string> ssid);

    std::size_t id() override;
    const std::optional<std::string>& getSsid() override;
    bool removeSync() override;
    bool selectSync() override;
    bool setEnabledSync(bool enabled) override;
    bool setPrioritySync(int priority) override;

  private:
    ConfiguredNetworks& networks_;
    dbus::OPath path_;
    std::optional<std::string> ssid_;
};

}  // namespace kaz::wifi
