#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>

#include "simulator/bus/vtable.h"
#include "simulator/supplicant/interface_object.h"
#include "simulator/supplicant/settings_message.h"

namespace kaz::sim {
namespace {

[[noreturn]] void refuseArguments() {
    throw BusError("fi.w1.wpa_supplicant1.InvalidArgs", "Did not receive correct message arguments.");
}

[[noreturn]] void refuseUnconnected() {
    throw BusError("fi.w1.wpa_supplicant1.NotConnected", "This interface is not connected");
}

std::set<std::string> readSsids(sd_bus_message* call) {
    std::set<std::string> ssids;
    checked(sd_bus_message_enter_container(call, 'v', "aay"), "enter variant");
    checked(sd_bus_message_enter_container(call, 'a', "ay"), "enter array");
    while (checked(sd_bus_message_at_end(call, 0), "at end") == 0) {
        const void* bytes = nullptr;
        std::size_t size = 0;
        checked(sd_bus_message_read_array(call, 'y', &bytes, &size), "read SSID");
        ssids.emplace(static_cast<const char*>(bytes), size);
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
    checked(sd_bus_message_enter_container(call, 'a', "{sv}"), "enter dictionary");
    while (checked(sd_bus_message_enter_container(call, 'e', "sv"), "enter entry") > 0) {
        const char* key = nullptr;
        checked(sd_bus_message_read_basic(call, 's', &key), "read key");
        const std::string_view name = key;
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
        checked(sd_bus_message_exit_container(call), "exit entry");
    }
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

void InterfaceObject::signalPoll(sd_bus_message* call) {
    const AccessPoint* const accessPoint = station_.associatedWith();
    if (accessPoint == nullptr) {
        throw BusError(SD_BUS_ERROR_FAILED, "Failed to read signal");
    }
    constexpr std::int32_t noise = -95;
    constexpr std::int32_t linkSpeed = 72;
    const auto signal = std::int32_t{accessPoint->signal};
    reply(call, "a{sv}", 6, "rssi", "i", signal, "linkspeed", "i", linkSpeed, "noise", "i", noise,
          "frequency", "u", std::uint32_t{accessPoint->frequency}, "width", "s", "20 MHz", "avg-rssi", "i",
          signal);
}

void InterfaceObject::disconnect(sd_bus_message* call) {
    if (!station_.disconnect()) {
        refuseUnconnected();
    }
    reply(call, "");
}

void InterfaceObject::addNetwork(sd_bus_message* call) {
    const Settings settings = readSettings(call);
    NetworkConfig fresh;
    fresh.setEnabled(false);
    Network& network = publish(std::move(fresh));
    if (!network.config.setAll(settings, neighbourhood_.eapMethods)) {
        remove(network);
        throw BusError(SD_BUS_ERROR_INVALID_ARGS, "invalid message format");
    }
    reply(call, "o", networkObjects_.at(network.id)->path().c_str());
}

void InterfaceObject::reassociate(sd_bus_message* call) {
    station_.reassociate();
    reply(call, "");
}

void InterfaceObject::reconnect(sd_bus_message* call) {
    station_.reconnect();
    reply(call, "");
}

void InterfaceObject::removeNetwork(sd_bus_message* call) {
    remove(networkOf(call));
    reply(call, "");
}

void InterfaceObject::removeAllNetworks(sd_bus_message* call) {
    while (!networks_.all().empty()) {
        remove(*networks_.all().front());
    }
    reply(call, "");
}

void InterfaceObject::selectNetwork(sd_bus_message* call) {
    station_.select(networkOf(call));
    reply(call, "");
}

void InterfaceObject::flushBss(sd_bus_message* call) {
    std::uint32_t age = 0;
    checked(sd_bus_message_read(call, "u", &age), "read age");
    station_.flush(std::chrono::seconds(age));
    reply(call, "");
}

void InterfaceObject::saveConfig(sd_bus_message* call) {
    if (!storage_.config.updateConfig) {
        throw BusError("fi.w1.wpa_supplicant1.UnknownError",
                       "Not allowed to update configuration (update_config=0)");
    }
    SavedConfig saved{.updateConfig = true, .networks = {}};
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
    reply(call, "");
}

Network& InterfaceObject::networkOf(sd_bus_message* call) {
    const char* text = nullptr;
    checked(sd_bus_message_read_basic(call, 'o', &text), "read path");
    const std::string wanted = text;
    if (!wanted.starts_with(std::string(path) + "/Networks/")) {
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
    sd_bus_emit_signal(connection_.bus(), path, "fi.w1.wpa_supplicant1.Interface", "NetworkRemoved", "o",
                       networkObjects_.at(id)->path().c_str());
    networkObjects_.erase(id);
}

}  // namespace kaz::sim
