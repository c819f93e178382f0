#include "bench/codec/sample_messages.h"

#include "bench/stand_in/bss_dictionary.h"

#include <sys/socket.h>

#include <array>

namespace kaz::bench {

BusPtr makeUnconnectedBus() {
    std::array<int, 2> ends{};
    check(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()));
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus));
    BusPtr owned(bus);
    check(sd_bus_set_fd(bus, ends[0], ends[0]));  // the other end stays open until the process ends
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
    dbus::MessagePtr owned = makeSignal(bus);
    sd_bus_message* message = owned.get();
    appendBssProperties(message, "Neighbour5", -63);
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
