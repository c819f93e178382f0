#include "bench/stand_in/control.h"

#include "bench/stand_in/bss_dictionary.h"

#include <cstdint>
#include <string_view>

namespace kaz::bench {
namespace {

void reportBssList(sd_bus* bus, std::uint32_t count) {
    sd_bus_message* signal = nullptr;
    check(sd_bus_message_new_signal(bus, &signal, interfacePath, "org.freedesktop.DBus.Properties",
                                    "PropertiesChanged"));
    check(sd_bus_message_append(signal, "s", "fi.w1.wpa_supplicant1.Interface"));
    check(sd_bus_message_open_container(signal, 'a', "{sv}"));
    appendBssPaths(signal, count);
    check(sd_bus_message_close_container(signal));
    check(sd_bus_message_append(signal, "as", 0));
    check(sd_bus_send(bus, signal, nullptr));
    sd_bus_message_unref(signal);
}

void reportScans(sd_bus* bus, std::uint32_t count) {
    constexpr const char* interface = "fi.w1.wpa_supplicant1.Interface";
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i % 2 == 0) {
            check(sd_bus_emit_signal(bus, interfacePath, "org.freedesktop.DBus.Properties",
                                     "PropertiesChanged", "sa{sv}as", interface, 1, "Scanning", "b", 1, 0));
        } else {
            check(sd_bus_emit_signal(bus, interfacePath, interface, "ScanDone", "b", 1));
        }
        check(sd_bus_flush(bus));
    }
}

}  // namespace

int control(sd_bus_message* call, World& world) {
    sd_bus* bus = sd_bus_message_get_bus(call);
    const std::string_view member = sd_bus_message_get_member(call);
    std::uint32_t value = 0;
    check(sd_bus_message_read_basic(call, member == "Hang" ? 'b' : 'u', &value));
    check(sd_bus_reply_method_return(call, nullptr));
    if (member == "SetBssCount") {
        world.bssCount = value;
    } else if (member == "SetSsidCount") {
        world.ssidCount = value;
    } else if (member == "Report") {
        reportBssList(bus, value);
    } else if (member == "Scans") {
        reportScans(bus, value);
    } else if (member == "Hang") {
        world.hanging = value != 0;
    }
    return 0;
}

}  // namespace kaz::bench
