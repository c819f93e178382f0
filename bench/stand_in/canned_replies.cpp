#include "bench/stand_in/canned_replies.h"

#include "bench/stand_in/bss_dictionary.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace kaz::bench {
namespace {

constexpr std::string_view bssFolder = "/fi/w1/wpa_supplicant1/Interfaces/0/BSSs/";

void replyWithBss(sd_bus_message* reply, std::string_view path, const World& world) {
    const auto number = static_cast<std::uint32_t>(std::atoi(path.data() + bssFolder.size()));
    const std::uint32_t network = world.ssidCount == 0 ? number : number % world.ssidCount;
    appendBssProperties(reply, "Neighbour" + std::to_string(network), -40 - static_cast<int>(number % 50));
}

void replyWithInterface(sd_bus_message* reply, const World& world) {
    check(sd_bus_message_open_container(reply, 'a', "{sv}"));
    check(sd_bus_message_append(reply, "{sv}", "State", "s", "inactive"));
    check(sd_bus_message_append(reply, "{sv}", "Scanning", "b", 0));
    check(sd_bus_message_append(reply, "{sv}", "CurrentBSS", "o", "/"));
    check(sd_bus_message_append(reply, "{sv}", "CurrentNetwork", "o", "/"));
    appendBssPaths(reply, world.bssCount);
    check(sd_bus_message_close_container(reply));
}

void replyToGetAll(sd_bus_message* reply, std::string_view path, const World& world) {
    if (path.starts_with(bssFolder)) {
        replyWithBss(reply, path, world);
    } else if (path == interfacePath) {
        replyWithInterface(reply, world);
    } else {
        check(sd_bus_message_append(reply, "a{sv}", 1, "OnlineState", "s", "offline"));
    }
}

void replyToGet(sd_bus_message* reply, std::string_view property) {
    if (property == "ActiveState") {
        check(sd_bus_message_append(reply, "v", "s", "active"));
    } else if (property == "Interfaces") {
        check(sd_bus_message_append(reply, "v", "ao", 1, interfacePath));
    } else if (property == "EapMethods") {
        check(sd_bus_message_append(reply, "v", "as", 3, "PEAP", "TTLS", "MSCHAPV2"));
    } else {
        check(sd_bus_message_append(reply, "v", "ao", 0));
    }
}

}  // namespace

void appendBssPaths(sd_bus_message* message, std::uint32_t count) {
    check(sd_bus_message_open_container(message, 'e', "sv"));
    check(sd_bus_message_append(message, "s", "BSSs"));
    check(sd_bus_message_open_container(message, 'v', "ao"));
    check(sd_bus_message_open_container(message, 'a', "o"));
    for (std::uint32_t i = 0; i < count; ++i) {
        check(sd_bus_message_append(message, "o", (std::string(bssFolder) + std::to_string(i)).c_str()));
    }
    for (int open = 0; open < 3; ++open) {
        check(sd_bus_message_close_container(message));
    }
}

int answer(sd_bus_message* call, const World& world) {
    const std::string_view member = sd_bus_message_get_member(call);
    sd_bus_message* reply = nullptr;
    if (const int r = sd_bus_message_new_method_return(call, &reply); r < 0) {
        return r;
    }
    if (member == "GetAll") {
        replyToGetAll(reply, sd_bus_message_get_path(call), world);
    } else if (member == "Get") {
        const char* interface = nullptr;
        const char* property = nullptr;
        check(sd_bus_message_read(call, "ss", &interface, &property));
        replyToGet(reply, property);
    } else if (member == "LoadUnit") {
        check(sd_bus_message_append(reply, "o", "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice"));
    }
    const int r = sd_bus_send(sd_bus_message_get_bus(call), reply, nullptr);
    sd_bus_message_unref(reply);
    return r;
}

}  // namespace kaz::bench
