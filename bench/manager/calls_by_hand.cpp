#include "bench/manager/calls_by_hand.h"

#include "bench/codec/hand_written_codec.h"
#include "bench/stand_in/stand_in_process.h"
#include "communicator/bss_rules.h"
#include "communicator/communicator.h"

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::bench {
namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* systemd = "org.freedesktop.systemd1";
constexpr const char* networkd = "org.freedesktop.network1";
constexpr const char* supplicant = "fi.w1.wpa_supplicant1";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

struct UnrefMessage {
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

void require(int result) {
    if (result < 0) {
        throw std::runtime_error("a call by hand failed");
    }
}

template <typename... Arguments>
Message call(sd_bus* bus, const char* service, const char* path, const char* interface, const char* member,
             const char* types, Arguments... arguments) {
    sd_bus_message* reply = nullptr;
    require(sd_bus_call_method(bus, service, path, interface, member, nullptr, &reply, types, arguments...));
    return Message(reply);
}

int ignore(sd_bus_message* /*message*/, void* /*context*/, sd_bus_error* /*error*/) {
    return 0;
}

void follow(sd_bus* bus, const char* sender, const char* path, const char* interface, const char* member) {
    require(sd_bus_match_signal(bus, nullptr, sender, path, interface, member, &ignore, nullptr));
}

void followOwner(sd_bus* bus, const char* name) {
    const std::string match = std::string(
                                  "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                                  "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") +
                              name + "'";
    require(sd_bus_add_match(bus, nullptr, match.c_str(), &ignore, nullptr));
    call(bus, busName, "/org/freedesktop/DBus", busName, "GetNameOwner", "s", name);
}

void getProperty(sd_bus* bus, const char* service, const char* path, const char* interface,
                 const char* property) {
    call(bus, service, path, properties, "Get", "ss", interface, property);
}

void attachToSystemd(sd_bus* bus) {
    constexpr const char* path = "/org/freedesktop/systemd1";
    constexpr const char* interface = "org.freedesktop.systemd1.Manager";
    const Message reply = call(bus, systemd, path, interface, "LoadUnit", "s", "wpa_supplicant.service");
    const char* unit = nullptr;
    require(sd_bus_message_read(reply.get(), "o", &unit));
    call(bus, systemd, path, interface, "Subscribe", "");
    followOwner(bus, systemd);
    follow(bus, systemd, unit, properties, "PropertiesChanged");
    getProperty(bus, systemd, unit, "org.freedesktop.systemd1.Unit", "ActiveState");
}

std::vector<std::string> readBssPaths(sd_bus_message* message) {
    std::vector<std::string> paths;
    require(sd_bus_message_enter_container(message, 'a', "{sv}"));
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        require(sd_bus_message_read(message, "s", &key));
        if (std::string_view(key) != "BSSs") {
            require(sd_bus_message_skip(message, "v"));
        } else {
            require(sd_bus_message_enter_container(message, 'v', "ao"));
            require(sd_bus_message_enter_container(message, 'a', "o"));
            const char* path = nullptr;
            while (sd_bus_message_read(message, "o", &path) > 0) {
                paths.emplace_back(path);
            }
            require(sd_bus_message_exit_container(message));
            require(sd_bus_message_exit_container(message));
        }
        require(sd_bus_message_exit_container(message));
    }
    return paths;
}

std::vector<std::string> attachToSupplicant(sd_bus* bus) {
    constexpr const char* interface = "fi.w1.wpa_supplicant1.Interface";
    constexpr const char* path = "/fi/w1/wpa_supplicant1/Interfaces/0";
    getProperty(bus, supplicant, "/fi/w1/wpa_supplicant1", supplicant, "Interfaces");
    followOwner(bus, supplicant);
    follow(bus, supplicant, path, interface, "ScanDone");
    follow(bus, supplicant, path, interface, "EAP");
    follow(bus, supplicant, path, interface, "NetworkSelected");
    follow(bus, supplicant, path, properties, "PropertiesChanged");
    return readBssPaths(call(bus, supplicant, path, properties, "GetAll", "s", interface).get());
}

std::vector<wifi::Communicator::BssProperties> readAccessPoints(sd_bus* bus,
                                                                const std::vector<std::string>& paths) {
    std::vector<wifi::Communicator::BssProperties> all;
    for (const std::string& path : paths) {
        const Message reply =
            call(bus, supplicant, path.c_str(), properties, "GetAll", "s", "fi.w1.wpa_supplicant1.BSS");
        wifi::BSSData data;
        require(readBssByHand(reply.get(), data));
        all.push_back({wifi::ssidOfBss(data.ssid), data.signal, wifi::securityModeOfBss(data)});
    }
    return all;
}

void attachToNetworkd(sd_bus* bus) {
    constexpr const char* path = "/org/freedesktop/network1";
    followOwner(bus, networkd);
    follow(bus, networkd, path, properties, "PropertiesChanged");
    call(bus, networkd, path, properties, "GetAll", "s", "org.freedesktop.network1.Manager");
}

std::size_t sortedListSize(const std::vector<wifi::Communicator::BssProperties>& accessPoints) {
    std::map<std::string, wifi::Communicator::BssProperties> bySsid;
    for (const auto& bss : accessPoints) {
        auto& entry = bySsid.try_emplace(bss.ssid, bss).first->second;
        entry.signal = std::max(entry.signal, bss.signal);
    }
    std::vector<wifi::Communicator::BssProperties> list;
    for (auto& entry : bySsid) {
        list.push_back(std::move(entry.second));
    }
    std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) { return a.signal > b.signal; });
    return list.size();
}

}  // namespace

std::size_t listNetworksByHand(const std::string& busAddress) {
    const OpenBus bus = connectTo(busAddress);
    attachToSystemd(bus.get());
    const std::vector<std::string> paths = attachToSupplicant(bus.get());
    const auto accessPoints = readAccessPoints(bus.get(), paths);
    attachToNetworkd(bus.get());
    getProperty(bus.get(), supplicant, "/fi/w1/wpa_supplicant1", supplicant, "EapMethods");
    getProperty(bus.get(), supplicant, "/fi/w1/wpa_supplicant1/Interfaces/0",
                "fi.w1.wpa_supplicant1.Interface", "Networks");
    return sortedListSize(accessPoints);
}

}  // namespace kaz::bench
