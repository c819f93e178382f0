// The supplicant's unit in systemd, and the link in systemd-networkd.
#include "base/log.h"
#include "communicator/bus_names.h"
#include "communicator/dbus_communicator.h"

#include <algorithm>

namespace kaz::wifi {
namespace {

constexpr const char* noUnit = "/";

}  // namespace

bool DbusCommunicator::startStopSupplicantSync(bool start) {
    log::debug("Turning wpa_supplicant {}.", start ? "on" : "off");
    const std::string unit = bus::systemd::supplicantUnit;
    const dbus::RemoteObject systemd = systemdManager();
    if (start) {
        // A unit that failed too often in a row would not start again.
        systemd.call("ResetFailedUnit", unit);
    }
    const bool accepted = static_cast<bool>(
        systemd.call(start ? "StartUnit" : "StopUnit", unit, std::string(bus::systemd::jobMode)));
    if (start && accepted && !unitFollowed_) {
        connectToSystemdSync();
    }
    return accepted;
}

void DbusCommunicator::connectToSystemdSync() {
    const dbus::OPath unit = systemdLoadUnitSync();
    log::debug("Dbus path of wpa_supplicant within systemd daemon is {}", unit.str());
    // systemd sends no unit signals before anybody asked for them.
    systemdManager().call("Subscribe");
    followUnit(unit);
    const std::string state = systemdGetUnitActiveStateSync(unit);
    unitFollowed_ = unit.str() != noUnit && !state.empty();
    connectOrDisconnectFromSupplicantSync(state);
}

void DbusCommunicator::followUnit(const dbus::OPath& unit) {
    // The loop keeps this subscription when it loses the bus.
    if (std::find(followedUnits_.begin(), followedUnits_.end(), unit) != followedUnits_.end()) {
        return;
    }
    followedUnits_.push_back(unit);
    subscribe(bus::systemd::service, unit, bus::propertiesInterface, bus::propertiesChanged,
              dbus::Bus::Lifetime::permanent, &DbusCommunicator::onSignalUnitPropertiesChanged);
}

// A systemd that was not there yet knew no unit, and a new one does not know that we asked for signals.
void DbusCommunicator::onSystemdChanged(bool owned) {
    if (owned) {
        connectToSystemdSync();
    }
}

// One that comes later may have found out the state before anybody could hear of it.
void DbusCommunicator::onNetworkdChanged(bool owned) {
    if (owned && networkdSilent_) {
        readNetworkd();
    }
}

void DbusCommunicator::onConnectionChanged(bool connected) {
    if (connected) {
        connectToSystemdSync();
    } else if (supplicantOn_) {
        supplicantLost_ = true;
        detach();
    }
}

dbus::OPath DbusCommunicator::systemdLoadUnitSync() {
    dbus::Reply reply = systemdManager().call("LoadUnit", std::string(bus::systemd::supplicantUnit));
    return reply.read<dbus::OPath>().value_or(dbus::OPath(noUnit));
}

std::string DbusCommunicator::systemdGetUnitActiveStateSync(const dbus::OPath& unit) {
    dbus::Reply reply =
        remoteObject(bus::systemd::service, unit, bus::systemd::unitInterface).get("ActiveState");
    return reply.read<std::string>().value_or(std::string());
}

void DbusCommunicator::onSignalUnitPropertiesChanged(dbus::MessageDecoder& decoder) {
    const auto interface = dbus::read<std::string>(decoder);
    if (!interface || *interface != bus::systemd::unitInterface) {
        return;
    }
    const auto properties = dbus::read<SystemdUnitProperty>(decoder);
    if (properties && properties->activeState) {
        connectOrDisconnectFromSupplicantSync(*properties->activeState);
    }
}

void DbusCommunicator::onSignalNetworkdLinkPropertiesChanged(dbus::MessageDecoder& decoder) {
    const auto interface = dbus::read<std::string>(decoder);
    const auto properties = dbus::read<dbus::NetworkdLinkProperties>(decoder);
    if (interface && properties && *interface == bus::networkd::managerInterface) {
        emitNetworkdLinkProperties(*properties);
    }
}

void DbusCommunicator::emitNetworkdLinkProperties(const dbus::NetworkdLinkProperties& properties) {
    if (!properties.onlineState) {
        return;
    }
    log::debug("OnlineState={}", *properties.onlineState);
    networkdOnlineHandler(*properties.onlineState == "online");
}

}  // namespace kaz::wifi
