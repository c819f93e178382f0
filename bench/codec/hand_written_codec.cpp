#include "bench/codec/hand_written_codec.h"

#include <cstring>

namespace kaz::bench {
namespace {

int readStrings(sd_bus_message* message, std::set<std::string>& strings) {
    int r = sd_bus_message_enter_container(message, 'a', "s");
    if (r < 0) {
        return r;
    }
    const char* text = nullptr;
    while ((r = sd_bus_message_read_basic(message, 's', static_cast<void*>(&text))) > 0) {
        strings.emplace(text);
    }
    return r < 0 ? r : sd_bus_message_exit_container(message);
}

// sd-bus skips an array element by element, even bytes; reading an array takes it at once.
int skipVariant(sd_bus_message* message) {
    const char* contents = nullptr;
    int r = sd_bus_message_peek_type(message, nullptr, &contents);
    if (r < 0) {
        return r;
    }
    if (std::strcmp(contents, "ay") != 0 && std::strcmp(contents, "au") != 0) {
        return sd_bus_message_skip(message, "v");
    }
    const char element = contents[1];
    r = sd_bus_message_enter_container(message, 'v', contents);
    if (r < 0) {
        return r;
    }
    const void* numbers = nullptr;
    std::size_t size = 0;
    r = sd_bus_message_read_array(message, element, &numbers, &size);
    return r < 0 ? r : sd_bus_message_exit_container(message);
}

// Calls `readValue(key)` inside the variant of each entry, and skips a value that it does not read.
template <typename ReadValue>
int readDictionary(sd_bus_message* message, ReadValue readValue) {
    int r = sd_bus_message_enter_container(message, 'a', "{sv}");
    if (r < 0) {
        return r;
    }
    while ((r = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
        const char* key = nullptr;
        r = sd_bus_message_read_basic(message, 's', static_cast<void*>(&key));
        if (r < 0) {
            return r;
        }
        r = readValue(key);
        if (r < 0) {
            return r;
        }
        r = sd_bus_message_exit_container(message);
        if (r < 0) {
            return r;
        }
    }
    return r < 0 ? r : sd_bus_message_exit_container(message);
}

template <typename Read>
int inVariant(sd_bus_message* message, const char* contents, Read read) {
    int r = sd_bus_message_enter_container(message, 'v', contents);
    if (r < 0) {
        return r;
    }
    r = read();
    return r < 0 ? r : sd_bus_message_exit_container(message);
}

int readBasic(sd_bus_message* message, char type, void* value) {
    const char contents[] = {type, '\0'};
    return inVariant(message, contents, [&] { return sd_bus_message_read_basic(message, type, value); });
}

int readSecurity(sd_bus_message* message, wifi::WPA_RSN& security) {
    return inVariant(message, "a{sv}", [&] {
        return readDictionary(message, [&](const char* key) {
            if (std::strcmp(key, "KeyMgmt") == 0) {
                return inVariant(message, "as", [&] { return readStrings(message, security.keyMgmt); });
            }
            if (std::strcmp(key, "Group") == 0) {
                const char* group = nullptr;
                const int r = readBasic(message, 's', static_cast<void*>(&group));
                if (r >= 0) {
                    security.group = group;
                }
                return r;
            }
            return skipVariant(message);
        });
    });
}

template <typename Number>
int readNumbers(sd_bus_message* message, char type, std::vector<Number>& numbers) {
    const char contents[] = {'a', type, '\0'};
    return inVariant(message, contents, [&] {
        const void* read = nullptr;
        std::size_t size = 0;
        const int r = sd_bus_message_read_array(message, type, &read, &size);
        if (r >= 0) {
            const auto* first = static_cast<const Number*>(read);
            numbers.assign(first, first + size / sizeof(Number));
        }
        return r;
    });
}

int readText(sd_bus_message* message, std::optional<std::string>& text) {
    const char* value = nullptr;
    const int r = readBasic(message, 's', static_cast<void*>(&value));
    if (r >= 0) {
        text = value;
    }
    return r;
}

int readPath(sd_bus_message* message, std::optional<dbus::OPath>& path) {
    const char* value = nullptr;
    const int r = readBasic(message, 'o', static_cast<void*>(&value));
    if (r >= 0) {
        path = dbus::OPath(value);
    }
    return r;
}

int appendText(sd_bus_message* message, const char* key, const char* value) {
    return sd_bus_message_append(message, "{sv}", key, "s", value);
}

}  // namespace

int readBssByHand(sd_bus_message* message, wifi::BSSData& bss) {
    return readDictionary(message, [&](const char* key) {
        if (std::strcmp(key, "SSID") == 0) {
            return readNumbers(message, 'y', bss.ssid);
        }
        if (std::strcmp(key, "Privacy") == 0) {
            int privacy = 0;
            const int r = readBasic(message, 'b', &privacy);
            bss.privacy = privacy != 0;
            return r;
        }
        if (std::strcmp(key, "Signal") == 0) {
            return readBasic(message, 'n', &bss.signal);
        }
        if (std::strcmp(key, "BSSID") == 0) {
            return readNumbers(message, 'y', bss.bssid.value.emplace());
        }
        if (std::strcmp(key, "Frequency") == 0) {
            return readBasic(message, 'q', &bss.frequency.value.emplace());
        }
        if (std::strcmp(key, "Rates") == 0) {
            return readNumbers(message, 'u', bss.rates.value.emplace());
        }
        if (std::strcmp(key, "Mode") == 0) {
            return readText(message, bss.mode.value);
        }
        if (std::strcmp(key, "WPA") == 0) {
            return readSecurity(message, bss.wpa);
        }
        if (std::strcmp(key, "RSN") == 0) {
            return readSecurity(message, bss.rsn);
        }
        return skipVariant(message);
    });
}

int readPropertiesChangedByHand(sd_bus_message* message, dbus::SupplicantInterfaceProperties& properties) {
    return readDictionary(message, [&](const char* key) {
        if (std::strcmp(key, "State") == 0) {
            return readText(message, properties.state);
        }
        if (std::strcmp(key, "CurrentBSS") == 0) {
            return readPath(message, properties.currentBss);
        }
        if (std::strcmp(key, "CurrentNetwork") == 0) {
            return readPath(message, properties.currentNetwork);
        }
        return skipVariant(message);
    });
}

int writeNetworkByHand(sd_bus_message* message) {
    int r = sd_bus_message_open_container(message, 'a', "{sv}");
    r = r < 0 ? r : sd_bus_message_append(message, "{sv}", "ieee80211w", "i", 1);
    r = r < 0 ? r : appendText(message, "key_mgmt", "WPA-PSK");
    r = r < 0 ? r : appendText(message, "psk", "correct horse battery");
    r = r < 0 ? r : appendText(message, "ssid", "Neighbour5");
    return r < 0 ? r : sd_bus_message_close_container(message);
}

}  // namespace kaz::bench
