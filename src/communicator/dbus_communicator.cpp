#include "communicator/dbus_communicator.h"

#include "base/log.h"
#include "communicator/bus_names.h"

#include <utility>

namespace kaz::wifi {

std::unique_ptr<Communicator> createCommunicator() {
    return std::make_unique<DbusCommunicator>();
}

DbusCommunicator::DbusCommunicator() {
    bus_.onConnectionChanged([this](bool connected) { onConnectionChanged(connected); });
    // From the start: who comes between a call that failed and the moment we begin to look would be missed.
    bus_.onOwnerChanged(bus::systemd::service, [this](bool owned) { onSystemdChanged(owned); });
    bus_.onOwnerChanged(bus::networkd::service, [this](bool owned) { onNetworkdChanged(owned); });
    bus_.pushTask([this] { connectToSystemdSync(); });
}

DbusCommunicator::~DbusCommunicator() = default;

void DbusCommunicator::startEventLoop() {
    bus_.start();
}

void DbusCommunicator::stopEventLoop() {
    bus_.stop();
}

bool DbusCommunicator::isSupplicantOn() {
    return supplicantOn_;
}

bool DbusCommunicator::supplicantSurvived() {
    return supplicantLost_;
}

void DbusCommunicator::pushTaskAsync_(std::function<void()> task) {
    bus_.pushTask(std::move(task));
}

void DbusCommunicator::configureTimerSync(bool enable, std::chrono::milliseconds interval) {
    bus_.configureTimer(enable, interval);
}

void DbusCommunicator::setTimerCompletedTask(std::function<void()> task) {
    bus_.setTimerTask(std::move(task));
}

void DbusCommunicator::setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) {
    bus_.setIdleTask(std::move(task));
}

bool DbusCommunicator::mayUseSupplicant(const char* what, log::Level level) {
    if (supplicantOn_) {
        return true;
    }
    log::write(level, "Can't {}, wpa_supplicant isn't running.", fmt::make_format_args(what));
    return false;
}

dbus::RemoteObject DbusCommunicator::remoteObject(const char* destination, const dbus::OPath& path,
                                                  const char* interface) {
    return bus_.object(destination, path, interface);
}

dbus::RemoteObject DbusCommunicator::supplicantRoot() {
    return remoteObject(bus::supplicant::service, bus::supplicant::rootPath, bus::supplicant::rootInterface);
}

dbus::RemoteObject DbusCommunicator::supplicantInterface() {
    return remoteObject(bus::supplicant::service, supplicantInterfacePath_,
                        bus::supplicant::interfaceInterface);
}

dbus::RemoteObject DbusCommunicator::supplicantNetwork(const dbus::OPath& network) {
    return remoteObject(bus::supplicant::service, network, bus::supplicant::networkInterface);
}

dbus::RemoteObject DbusCommunicator::systemdManager() {
    return remoteObject(bus::systemd::service, bus::systemd::managerPath, bus::systemd::managerInterface);
}

void DbusCommunicator::subscribe(const char* sender, const dbus::OPath& path, const char* interface,
                                 const char* member, dbus::Bus::Lifetime lifetime, SignalHandler handler) {
    bus_.subscribe(sender, path, interface, member, lifetime,
                   [this, handler](dbus::MessageDecoder& decoder) { (this->*handler)(decoder); });
}

}  // namespace kaz::wifi
