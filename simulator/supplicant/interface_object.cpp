#include "simulator/supplicant/interface_object.h"

#include <utility>

#include "simulator/bus/vtable.h"

namespace kaz::sim {
namespace {

constexpr const char* interfaceInterface = "fi.w1.wpa_supplicant1.Interface";

}  // namespace

const sd_bus_vtable InterfaceObject::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Scan", "a{sv}", "", vtable::method<&InterfaceObject::scan>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SignalPoll", "", "a{sv}", vtable::method<&InterfaceObject::signalPoll>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Disconnect", "", "", vtable::method<&InterfaceObject::disconnect>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AddNetwork", "a{sv}", "o", vtable::method<&InterfaceObject::addNetwork>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Reassociate", "", "", vtable::method<&InterfaceObject::reassociate>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Reconnect", "", "", vtable::method<&InterfaceObject::reconnect>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RemoveNetwork", "o", "", vtable::method<&InterfaceObject::removeNetwork>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RemoveAllNetworks", "", "", vtable::method<&InterfaceObject::removeAllNetworks>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SelectNetwork", "o", "", vtable::method<&InterfaceObject::selectNetwork>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("FlushBSS", "u", "", vtable::method<&InterfaceObject::flushBss>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SaveConfig", "", "", vtable::method<&InterfaceObject::saveConfig>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("ScanDone", "b", 0),
    SD_BUS_SIGNAL("BSSAdded", "oa{sv}", 0),
    SD_BUS_SIGNAL("BSSRemoved", "o", 0),
    SD_BUS_SIGNAL("NetworkAdded", "oa{sv}", 0),
    SD_BUS_SIGNAL("NetworkRemoved", "o", 0),
    SD_BUS_SIGNAL("NetworkSelected", "o", 0),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    SD_BUS_SIGNAL("EAP", "ss", 0),
    SD_BUS_PROPERTY("Capabilities", "a{sv}", vtable::get<&InterfaceObject::capabilities>, 0, vtable::emits),
    SD_BUS_PROPERTY("State", "s", vtable::get<&InterfaceObject::state>, 0, vtable::emits),
    SD_BUS_PROPERTY("Scanning", "b", vtable::get<&InterfaceObject::scanning>, 0, vtable::emits),
    SD_BUS_PROPERTY("ApScan", "u", vtable::get<&InterfaceObject::apScan>, 0, vtable::emits),
    SD_BUS_PROPERTY("BSSExpireAge", "u", vtable::get<&InterfaceObject::bssExpireAge>, 0, vtable::emits),
    SD_BUS_PROPERTY("BSSExpireCount", "u", vtable::get<&InterfaceObject::bssExpireCount>, 0, vtable::emits),
    SD_BUS_PROPERTY("Country", "s", vtable::get<&InterfaceObject::country>, 0, vtable::emits),
    SD_BUS_PROPERTY("Ifname", "s", vtable::get<&InterfaceObject::ifname>, 0, vtable::emits),
    SD_BUS_PROPERTY("Driver", "s", vtable::get<&InterfaceObject::driver>, 0, vtable::emits),
    SD_BUS_PROPERTY("ConfigFile", "s", vtable::get<&InterfaceObject::configFile>, 0, vtable::emits),
    SD_BUS_PROPERTY("CurrentBSS", "o", vtable::get<&InterfaceObject::currentBss>, 0, vtable::emits),
    SD_BUS_PROPERTY("CurrentNetwork", "o", vtable::get<&InterfaceObject::currentNetwork>, 0, vtable::emits),
    SD_BUS_PROPERTY("CurrentAuthMode", "s", vtable::get<&InterfaceObject::currentAuthMode>, 0, vtable::emits),
    SD_BUS_PROPERTY("BSSs", "ao", vtable::get<&InterfaceObject::bsss>, 0, vtable::emits),
    SD_BUS_PROPERTY("Networks", "ao", vtable::get<&InterfaceObject::networkPaths>, 0, vtable::emits),
    SD_BUS_PROPERTY("ScanInterval", "i", vtable::get<&InterfaceObject::scanInterval>, 0, vtable::emits),
    SD_BUS_PROPERTY("DisconnectReason", "i", vtable::get<&InterfaceObject::disconnectReason>, 0,
                    vtable::emits),
    SD_BUS_PROPERTY("AuthStatusCode", "i", vtable::get<&InterfaceObject::authStatusCode>, 0, vtable::emits),
    SD_BUS_WRITABLE_PROPERTY("UpdateConfig", "s", vtable::get<&InterfaceObject::updateConfig>,
                             vtable::set<&InterfaceObject::setUpdateConfig>, 0, vtable::emits),
    SD_BUS_VTABLE_END,
};

InterfaceObject::InterfaceObject(Connection& connection, const Scheduler& scheduler,
                                 const Neighbourhood& neighbourhood, Storage& storage,
                                 std::function<void()> stateChanged)
    : connection_(connection),
      scheduler_(scheduler),
      neighbourhood_(neighbourhood),
      storage_(storage),
      stateChanged_(std::move(stateChanged)),
      properties_(scheduler, {connection.bus(), path, interfaceInterface, vtable_, this}, true),
      station_(scheduler, neighbourhood, networks_, stationEvents()),
      slot_(connection.serve(path, interfaceInterface, vtable_, this)) {
    for (const NetworkConfig& config : storage.config.networks) {
        publish(config);
    }
}

void InterfaceObject::withdraw() {
    for (const auto& [id, object] : networkObjects_) {
        emit("NetworkRemoved", "o", object->path().c_str());
    }
}

void InterfaceObject::storm(unsigned signals) {
    for (unsigned i = 0; i < signals; ++i) {
        properties_.changed("State");
        properties_.flush();
    }
}

Station::Events InterfaceObject::stationEvents() {
    return {
        .changed = [this](const char* property) { changed(property); },
        .scanDone = [this](bool success) { emit("ScanDone", "b", success ? 1 : 0); },
        .networkSelected =
            [this](const Network& network) {
                emit("NetworkSelected", "o", networkObjects_.at(network.id)->path().c_str());
            },
        .enabledChanged =
            [this](const Network& network) {
                networkObjects_.at(network.id)->properties().changed("Enabled");
            },
        .eap = [this](const std::string& status,
                      const std::string& parameter) { emit("EAP", "ss", status.c_str(), parameter.c_str()); },
        .bss =
            {
                .added =
                    [this](const Bss& bss) {
                        const auto object = bssObjects_.emplace(
                            bss.id,
                            std::make_unique<BssObject>(connection_, scheduler_, bssPath(bss.id), bss));
                        emitAdded("BSSAdded", object.first->second->properties().source());
                        changed("BSSs");
                    },
                .changed =
                    [this](const Bss& bss) {
                        for (const char* const name :
                             {"Signal", "Frequency", "Privacy", "WPA", "RSN", "Age"}) {
                            bssObjects_.at(bss.id)->properties().changed(name);
                        }
                    },
                .removed =
                    [this](unsigned id) {
                        emit("BSSRemoved", "o", bssPath(id).c_str());
                        bssObjects_.erase(id);
                        changed("BSSs");
                    },
            },
    };
}

Network& InterfaceObject::publish(NetworkConfig config) {
    Network& network = networks_.add(std::move(config));
    auto object = std::make_unique<NetworkObject>(
        connection_, scheduler_, NetworkObject::pathOf(path, network.id), network, neighbourhood_.eapMethods,
        [this, &network](bool enabled) { station_.setEnabled(network, enabled); });
    emitAdded("NetworkAdded", object->properties().source());
    networkObjects_.emplace(network.id, std::move(object));
    return network;
}

void InterfaceObject::changed(const char* property) {
    properties_.changed(property);
    const std::string_view name = property;
    if (name == "DisconnectReason" || name == "AuthStatusCode") {
        properties_.flush();
    } else if (name == "State") {
        stateChanged_();
    }
}

template <typename... Arguments>
void InterfaceObject::emit(const char* member, const char* types, Arguments... arguments) {
    sd_bus_emit_signal(connection_.bus(), path, interfaceInterface, member, types, arguments...);
}

void InterfaceObject::emitAdded(const char* member, const PropertySource& object) {
    sd_bus_message* raw = nullptr;
    checked(sd_bus_message_new_signal(connection_.bus(), &raw, path, interfaceInterface, member),
            "new signal");
    const Message signal(raw);
    checked(sd_bus_message_append(raw, "o", object.path.c_str()), "append path");
    appendProperties(raw, object, {});
    sd_bus_send(connection_.bus(), raw, nullptr);
}

std::string InterfaceObject::bssPath(unsigned id) {
    return std::string(path) + "/BSSs/" + std::to_string(id);
}

}  // namespace kaz::sim
