#include "simulator/bus/vtable.h"
#include "simulator/supplicant/interface_object.h"

#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>

namespace kaz::sim {
namespace {

[[noreturn]] void refuseArguments() {
    throw BusError("fi.w1.wpa_supplicant1.InvalidArgs", "Did not receive correct message arguments.");
}

std::set<std::string> readSsids(sd_bus_message* call) {
    std::set<std::string> ssids;
    checked(sd_bus_message_enter_container(call, 'v', "aay"), "enter variant");
    checked(sd_bus_message_enter_container(call, 'a', "ay"), "enter array");
    while (checked(sd_bus_message_at_end(call, 0), "at end") == 0) {
        ssids.insert(Wire<Bytes>::read(call));
    }
    checked(sd_bus_message_exit_container(call), "exit array");
    checked(sd_bus_message_exit_container(call), "exit variant");
    return ssids;
}

struct ScanRequest {
    std::string type;
    std::set<std::string> ssids;
};

ScanRequest readScanRequest(sd_bus_message* call) {
    ScanRequest request;
    readEntries(call, [&](std::string_view name) {
        if (name == "Type") {
            const char* type = nullptr;
            checked(sd_bus_message_read(call, "v", "s", &type), "read type");
            request.type = type;
        } else if (name == "SSIDs") {
            request.ssids = readSsids(call);
        } else if (name == "IEs" || name == "Channels" || name == "AllowRoam") {
            checked(sd_bus_message_skip(call, "v"), "skip");
        } else {
            refuseArguments();
        }
    });
    return request;
}

}  // namespace

void InterfaceObject::scan(sd_bus_message* call) {
    ScanRequest request;
    try {
        request = readScanRequest(call);
    } catch (const std::system_error&) {
        refuseArguments();
    }
    const bool passive = request.type == "passive";
    if ((!passive && request.type != "active") || (passive && !request.ssids.empty())) {
        refuseArguments();
    }
    if (!station_.scan(std::move(request.ssids))) {
        throw BusError("fi.w1.wpa_supplicant1.Interface.ScanError", "Scan request rejected");
    }
    reply(call, "");
}

Dictionary InterfaceObject::signalPoll() const {
    const AccessPoint* const accessPoint = station_.associatedWith();
    if (accessPoint == nullptr) {
        throw BusError(SD_BUS_ERROR_FAILED, "Failed to read signal");
    }
    const std::int32_t signal = accessPoint->signal;
    return {{"rssi", signal},
            {"linkspeed", std::int32_t{72}},
            {"noise", std::int32_t{-95}},
            {"frequency", std::uint32_t{accessPoint->frequency}},
            {"width", "20 MHz"},
            {"avg-rssi", signal}};
}

ObjectPath InterfaceObject::addNetwork(const Settings& settings) {
    NetworkConfig fresh;
    fresh.setEnabled(false);
    Network& network = publish(std::move(fresh));
    if (!network.config.setAll(settings, neighbourhood_.eapMethods)) {
        remove(network);
        throw BusError(SD_BUS_ERROR_INVALID_ARGS, "invalid message format");
    }
    return ObjectPath(networkObjects_.at(network.id)->path());
}

void InterfaceObject::removeAllNetworks() {
    while (!networks_.all().empty()) {
        remove(*networks_.all().front());
    }
}

void InterfaceObject::saveConfig() {
    if (!storage_.config.updateConfig) {
        throw BusError("fi.w1.wpa_supplicant1.UnknownError",
                       "Not allowed to update configuration (update_config=0)");
    }
    SavedConfig saved{.updateConfig = true, .country = storage_.config.country, .networks = {}};
    for (const auto& network : networks_.all()) {
        if (network->config.complete()) {
            saved.networks.push_back(network->config);
        }
    }
    if (!storage_.file.empty()) {
        try {
            writeConfig(storage_.file, saved);
        } catch (const std::runtime_error&) {
            throw BusError("fi.w1.wpa_supplicant1.UnknownError", "Failed to write configuration");
        }
    }
    storage_.config = std::move(saved);
}

Network& InterfaceObject::networkAt(const ObjectPath& wanted) {
    if (!wanted.starts_with(path_ + "/Networks/")) {
        refuseArguments();
    }
    for (const auto& [id, object] : networkObjects_) {
        if (object->path() == wanted) {
            return *networks_.find(id);
        }
    }
    throw BusError("fi.w1.wpa_supplicant1.NetworkUnknown", "There is no such a network in this interface.");
}

void InterfaceObject::remove(Network& network) {
    const unsigned id = network.id;
    station_.remove(network);
    sd_bus_emit_signal(connection_.bus(), path_.c_str(), interface, "NetworkRemoved", "o",
                       networkObjects_.at(id)->path().c_str());
    networkObjects_.erase(id);
}

}  // namespace kaz::sim
