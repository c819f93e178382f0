#include "sample_messages.h"

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <stdexcept>

namespace kaz::bench {
namespace {

void check(int result) {
    if (result < 0) {
        throw std::runtime_error("sd-bus failed");
    }
}

void appendBytes(sd_bus_message* message, const char* key, const void* bytes, std::size_t size) {
    check(sd_bus_message_open_container(message, 'e', "sv"));
    check(sd_bus_message_append(message, "s", key));
    check(sd_bus_message_open_container(message, 'v', "ay"));
    check(sd_bus_message_append_array(message, 'y', bytes, size));
    check(sd_bus_message_close_container(message));
    check(sd_bus_message_close_container(message));
}

}  // namespace

BusPtr makeUnconnectedBus() {
    std::array<int, 2> ends{};
    check(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()));
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus));
    BusPtr owned(bus);
    check(sd_bus_set_fd(bus, ends[0], ends[0]));  // the other end stays open for the process's life
    check(sd_bus_start(bus));
    return owned;
}

dbus::MessagePtr makeSignal(sd_bus* bus) {
    sd_bus_message* message = nullptr;
    check(sd_bus_message_new_signal(bus, &message, "/fi/w1/wpa_supplicant1/Interfaces/0",
                                    "org.freedesktop.DBus.Properties", "PropertiesChanged"));
    return dbus::MessagePtr(message);
}

dbus::MessagePtr makeBssProperties(sd_bus* bus) {
    constexpr std::array<unsigned char, 10> ssid{'N', 'e', 'i', 'g', 'h', 'b', 'o', 'u', 'r', '5'};
    constexpr std::array<unsigned char, 6> bssid{2, 0, 0, 0, 1, 0};
    const std::array<unsigned char, 321> elements{};
    dbus::MessagePtr owned = makeSignal(bus);
    sd_bus_message* message = owned.get();
    check(sd_bus_message_open_container(message, 'a', "{sv}"));
    appendBytes(message, "SSID", ssid.data(), ssid.size());
    appendBytes(message, "BSSID", bssid.data(), bssid.size());
    check(sd_bus_message_append(message, "{sv}", "Privacy", "b", 1));
    check(sd_bus_message_append(message, "{sv}", "Mode", "s", "infrastructure"));
    check(sd_bus_message_append(message, "{sv}", "Signal", "n", -63));
    check(sd_bus_message_append(message, "{sv}", "Frequency", "q", 5180));
    check(sd_bus_message_append(message, "{sv}", "Rates", "au", 8, 54000000U, 48000000U, 36000000U, 24000000U,
                                18000000U, 12000000U, 9000000U, 6000000U));
    check(sd_bus_message_append(message, "{sv}", "WPA", "a{sv}", 3, "KeyMgmt", "as", 0, "Pairwise", "as", 0,
                                "Group", "s", ""));
    check(sd_bus_message_append(message, "{sv}", "RSN", "a{sv}", 4, "KeyMgmt", "as", 2, "wpa-psk", "sae",
                                "Pairwise", "as", 1, "ccmp", "Group", "s", "ccmp", "MgmtGroup", "s",
                                "aes128cmac"));
    check(sd_bus_message_append(message, "{sv}", "WPS", "a{sv}", 1, "Type", "s", ""));
    appendBytes(message, "IEs", elements.data(), elements.size());
    check(sd_bus_message_append(message, "{sv}", "Age", "u", 3U));
    check(sd_bus_message_close_container(message));
    check(sd_bus_message_seal(message, 1, 0));
    return owned;
}

dbus::MessagePtr makePropertiesChanged(sd_bus* bus) {
    dbus::MessagePtr owned = makeSignal(bus);
    sd_bus_message* message = owned.get();
    check(sd_bus_message_append(message, "a{sv}", 3, "State", "s", "associating", "CurrentBSS", "o",
                                "/fi/w1/wpa_supplicant1/Interfaces/0/BSSs/12", "CurrentNetwork", "o",
                                "/fi/w1/wpa_supplicant1/Interfaces/0/Networks/3"));
    check(sd_bus_message_seal(message, 1, 0));
    return owned;
}

}  // namespace kaz::bench
