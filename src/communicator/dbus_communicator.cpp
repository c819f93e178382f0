#include "communicator/dbus_communicator.h"

#include "communicator/bus_names.h"
#include "communicator/loop_extensions.h"
#include "diagnostics/log.h"

#include <utility>

namespace kaz::wifi {

std::unique_ptr<Communicator> createCommunicator() {
    return std::make_unique<DbusCommunicator>();
}

DbusCommunicator::DbusCommunicator() {
    followConnection(eventLoop_, [this](bool connected) { onConnectionChanged(connected); });
    // From the start: who comes between a call that failed and the moment we begin to look would be missed.
    followNameOwner(eventLoop_, bus::systemd::service, [this](bool owned) { onSystemdChanged(owned); });
    followNameOwner(eventLoop_, bus::networkd::service, [this](bool owned) { onNetworkdChanged(owned); });
    eventLoop_.pushTaskAsync([this] { connectToSystemdSync(); });
}

DbusCommunicator::~DbusCommunicator() = default;

void DbusCommunicator::startEventLoop() {
    eventLoop_.startEventLoopAsync();
}

void DbusCommunicator::stopEventLoop() {
    eventLoop_.stopEventLoopAsync();
}

bool DbusCommunicator::isSupplicantOn() {
    return supplicantOn_;
}

void DbusCommunicator::pushTaskAsync_(std::function<void()> task) {
    eventLoop_.pushTaskAsync(std::move(task));
}

void DbusCommunicator::configureTimerSync(bool enable, std::chrono::milliseconds interval) {
    eventLoop_.configureTimerSync(enable, interval);
}

void DbusCommunicator::setTimerCompletedTask(std::function<void()> task) {
    eventLoop_.setTimerCompletedTask(std::move(task));
}

void DbusCommunicator::setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) {
    eventLoop_.setIdleTaskSync(std::move(task));
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
    return {eventLoop_.getSdBusHandle(), {destination, path.str(), interface}};
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
                                 const char* member, bool temporary, SignalHandler handler) {
    eventLoop_.registerSignalHandlerSync(
        sender, path.c_str(), interface, member, temporary,
        [this, handler](dbus::MessageDecoder& decoder) { (this->*handler)(decoder); });
}

}  // namespace kaz::wifi
