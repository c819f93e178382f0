#include "bench/stand_in/bss_dictionary.h"

#include <array>
#include <cstddef>
#include <stdexcept>

namespace kaz::bench {
namespace {

void appendBytes(sd_bus_message* message, const char* key, const void* bytes, std::size_t size) {
    check(sd_bus_message_open_container(message, 'e', "sv"));
    check(sd_bus_message_append(message, "s", key));
    check(sd_bus_message_open_container(message, 'v', "ay"));
    check(sd_bus_message_append_array(message, 'y', bytes, size));
    check(sd_bus_message_close_container(message));
    check(sd_bus_message_close_container(message));
}

}  // namespace

int check(int result) {
    if (result < 0) {
        throw std::runtime_error("sd-bus failed");
    }
    return result;
}

void appendBssProperties(sd_bus_message* message, const std::string& ssid, int signal) {
    constexpr std::array<unsigned char, 6> bssid{2, 0, 0, 0, 1, 0};
    const std::array<unsigned char, 321> elements{};
    check(sd_bus_message_open_container(message, 'a', "{sv}"));
    appendBytes(message, "SSID", ssid.data(), ssid.size());
    appendBytes(message, "BSSID", bssid.data(), bssid.size());
    check(sd_bus_message_append(message, "{sv}", "Privacy", "b", 1));
    check(sd_bus_message_append(message, "{sv}", "Mode", "s", "infrastructure"));
    check(sd_bus_message_append(message, "{sv}", "Signal", "n", signal));
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
}

}  // namespace kaz::bench
