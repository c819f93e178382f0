#include "simulator/supplicant/network_object.h"

#include <utility>

#include "simulator/bus/vtable.h"
#include "simulator/supplicant/settings_message.h"

namespace kaz::sim {
namespace {

constexpr const char* networkInterface = "fi.w1.wpa_supplicant1.Network";

}  // namespace

const sd_bus_vtable NetworkObject::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_WRITABLE_PROPERTY("Properties", "a{sv}", vtable::get<&NetworkObject::shown>,
                             vtable::set<&NetworkObject::change>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_WRITABLE_PROPERTY("Enabled", "b", vtable::get<&NetworkObject::enabled>,
                             vtable::set<&NetworkObject::setEnabled>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    SD_BUS_VTABLE_END,
};

std::string NetworkObject::pathOf(const std::string& interfacePath, unsigned id) {
    return interfacePath + "/Networks/" + std::to_string(id);
}

NetworkObject::NetworkObject(Connection& connection, const Scheduler& scheduler, std::string path,
                             Network& network, const std::vector<std::string>& eapMethods,
                             std::function<void(bool)> setEnabled)
    : network_(network),
      eapMethods_(eapMethods),
      setEnabled_(std::move(setEnabled)),
      path_(std::move(path)),
      properties_(scheduler, {connection.bus(), path_, networkInterface, vtable_, this}, true),
      slot_(connection.serve(path_, networkInterface, vtable_, this)) {}

void NetworkObject::shown(sd_bus_message* out) const {
    checked(sd_bus_message_open_container(out, 'a', "{sv}"), "open dictionary");
    for (const auto& [name, value] : network_.config.shown()) {
        checked(sd_bus_message_append(out, "{sv}", name.c_str(), "s", value.c_str()), "append");
    }
    checked(sd_bus_message_close_container(out), "close dictionary");
}

void NetworkObject::change(sd_bus_message* in) {
    if (!network_.config.setAll(readSettings(in), eapMethods_)) {
        throw BusError(SD_BUS_ERROR_INVALID_ARGS, "invalid message format");
    }
}

void NetworkObject::enabled(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "b", network_.config.enabled() ? 1 : 0), "append");
}

void NetworkObject::setEnabled(sd_bus_message* in) {
    int enabled = 0;
    checked(sd_bus_message_read(in, "b", &enabled), "read");
    setEnabled_(enabled != 0);
}

}  // namespace kaz::sim
