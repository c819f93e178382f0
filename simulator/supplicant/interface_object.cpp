#include "simulator/supplicant/interface_object.h"

#include <utility>

namespace kaz::sim {

InterfaceObject::InterfaceObject(Connection& connection, const Scheduler& scheduler,
                                 const Neighbourhood& neighbourhood, Storage& storage, std::string path,
                                 std::function<void()> stateChanged)
    : path_(std::move(path)),
      connection_(connection),
      scheduler_(scheduler),
      neighbourhood_(neighbourhood),
      storage_(storage),
      stateChanged_(std::move(stateChanged)),
      properties_(scheduler, {connection.bus(), path_, interface, vtable_, this}, true),
      station_(scheduler, neighbourhood, networks_, stationEvents()),
      slot_(connection.serve(path_, interface, vtable_, this)) {
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
        connection_, scheduler_, NetworkObject::pathOf(path_, network.id), network, neighbourhood_.eapMethods,
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
    sd_bus_emit_signal(connection_.bus(), path_.c_str(), interface, member, types, arguments...);
}

void InterfaceObject::emitAdded(const char* member, const PropertySource& object) {
    const Message signal = newSignal(connection_.bus(), path_, interface, member);
    checked(sd_bus_message_append(signal.get(), "o", object.path.c_str()), "append path");
    appendProperties(signal.get(), object, {});
    sd_bus_send(connection_.bus(), signal.get(), nullptr);
}

std::string InterfaceObject::bssPath(unsigned id) const {
    return path_ + "/BSSs/" + std::to_string(id);
}

}  // namespace kaz::sim
