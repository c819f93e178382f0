// Following the life of the supplicant: attaching to its interface object and detaching from it.
#include "base/log.h"
#include "communicator/bus_names.h"
#include "communicator/dbus_communicator.h"

#include <utility>

namespace kaz::wifi {

void DbusCommunicator::connectOrDisconnectFromSupplicantSync(const std::string& activeState) {
    const bool running = activeState == "active" || activeState == "reloading";
    const bool stopped = activeState == "failed" || activeState == "inactive";
    if (running && !supplicantOn_) {
        attach();
    } else if (stopped) {
        supplicantLost_ = false;
        if (supplicantOn_) {
            detach();
        }
    }
}

std::vector<dbus::OPath> DbusCommunicator::supplicantGetInterfacesSync() {
    dbus::Reply reply = supplicantRoot().get("Interfaces");
    return reply.read<std::vector<dbus::OPath>>().value_or(std::vector<dbus::OPath>{});
}

void DbusCommunicator::attach() {
    // First of all, so that the operations below are allowed.
    supplicantOn_ = true;
    const std::vector<dbus::OPath> interfaces = supplicantGetInterfacesSync();
    log::debug("wpa_supplicant has {} interfaces", interfaces.size());
    if (interfaces.empty()) {
        log::error("wpa_supplicant has no configured interfaces, can't control wifi");
        return;
    }
    supplicantInterfacePath_ = interfaces.front();
    subscribeToSupplicant();
    readInitialSupplicantProperties();
    followNetworkd();
    wifiServiceStatusChangeHandler();
    supplicantLost_ = false;
    logAttachment();
}

void DbusCommunicator::detach() {
    supplicantInterfacePath_ = dbus::OPath();
    supplicantOn_ = false;
    networkdSilent_ = false;
    wifiServiceStatusChangeHandler();
    bus_.dropTemporarySubscriptions();
    logAttachment();
}

void DbusCommunicator::logAttachment() {
    log::debug("wpa_supplicant is {}", supplicantOn_ ? "running" : "stopped");
}

void DbusCommunicator::subscribeToSupplicant() {
    const auto follow = [this](const char* interface, const char* member, SignalHandler handler) {
        subscribe(bus::supplicant::service, supplicantInterfacePath_, interface, member,
                  dbus::Bus::Lifetime::temporary, handler);
    };
    follow(bus::supplicant::interfaceInterface, "ScanDone", &DbusCommunicator::onSignalSupplicantScanDone);
    follow(bus::supplicant::interfaceInterface, "EAP", &DbusCommunicator::onSignalEAP);
    follow(bus::supplicant::interfaceInterface, "NetworkSelected",
           &DbusCommunicator::onSignalSupplicantNetworkSelected);
    follow(bus::propertiesInterface, bus::propertiesChanged,
           &DbusCommunicator::onSignalSupplicantPropertiesChanged);
}

void DbusCommunicator::readInitialSupplicantProperties() {
    dbus::Reply reply =
        remoteObject(bus::supplicant::service, supplicantInterfacePath_, bus::propertiesInterface)
            .call("GetAll", std::string(bus::supplicant::interfaceInterface));
    if (!reply) {
        return;
    }
    const auto properties = reply.read<dbus::SupplicantInterfaceProperties>();
    if (!properties) {
        log::error("Couldn't decode wpa_supplicant PropertiesChanged ({})", properties.error());
        return;
    }
    emitSupplicantInterfaceProperties(*properties);
}

void DbusCommunicator::followNetworkd() {
    subscribe(bus::networkd::service, bus::networkd::managerPath, bus::propertiesInterface,
              bus::propertiesChanged, dbus::Bus::Lifetime::temporary,
              &DbusCommunicator::onSignalNetworkdLinkPropertiesChanged);
    readNetworkd();
}

void DbusCommunicator::readNetworkd() {
    dbus::Reply reply =
        remoteObject(bus::networkd::service, bus::networkd::managerPath, bus::propertiesInterface)
            .call("GetAll", std::string(bus::networkd::managerInterface));
    networkdSilent_ = !reply;
    if (networkdSilent_) {
        return;
    }
    if (const auto properties = reply.read<dbus::NetworkdLinkProperties>()) {
        emitNetworkdLinkProperties(*properties);
    }
}

}  // namespace kaz::wifi
