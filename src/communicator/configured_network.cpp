#include "communicator/configured_network.h"

#include <functional>
#include <utility>

namespace kaz::wifi {

DbusCommunicator::ConfiguredNetwork::ConfiguredNetwork(DbusCommunicator& owner, dbus::OPath path,
                                                       std::optional<std::string> ssid)
    : owner_(owner), path_(std::move(path)), ssid_(std::move(ssid)) {}

std::size_t DbusCommunicator::ConfiguredNetwork::id() {
    return std::hash<std::string>{}(path_.str());
}

const std::optional<std::string>& DbusCommunicator::ConfiguredNetwork::getSsid() {
    return ssid_;
}

bool DbusCommunicator::ConfiguredNetwork::removeSync() {
    return owner_.removeNetworkSync(path_);
}

bool DbusCommunicator::ConfiguredNetwork::selectSync() {
    return owner_.selectNetworkSync(path_);
}

bool DbusCommunicator::ConfiguredNetwork::setEnabledSync(bool enabled) {
    return owner_.setNetworkEnabledSync(path_, enabled);
}

bool DbusCommunicator::ConfiguredNetwork::setPrioritySync(int priority) {
    return owner_.setNetworkPrioritySync(path_, priority);
}

}  // namespace kaz::wifi
