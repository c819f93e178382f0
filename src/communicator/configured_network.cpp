#include "communicator/configured_network.h"

#include "communicator/configured_networks.h"

#include <functional>
#include <utility>

namespace kaz::wifi {

ConfiguredNetwork::ConfiguredNetwork(ConfiguredNetworks& networks, dbus::OPath path,
                                     std::optional<std::string> ssid)
    : networks_(networks), path_(std::move(path)), ssid_(std::move(ssid)) {}

std::size_t ConfiguredNetwork::id() {
    return std::hash<std::string>{}(path_.str());
}

const std::optional<std::string>& ConfiguredNetwork::getSsid() {
    return ssid_;
}

bool ConfiguredNetwork::removeSync() {
    return networks_.removeSync(path_);
}

bool ConfiguredNetwork::selectSync() {
    return networks_.selectSync(path_);
}

bool ConfiguredNetwork::setEnabledSync(bool enabled) {
    return networks_.setEnabledSync(path_, enabled);
}

bool ConfiguredNetwork::setPrioritySync(int priority) {
    return networks_.setPrioritySync(path_, priority);
}

}  // namespace kaz::wifi
