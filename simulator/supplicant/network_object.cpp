#include "simulator/supplicant/network_object.h"

#include "simulator/bus/vtable.h"
#include "simulator/supplicant/settings_message.h"

#include <utility>

namespace kaz::sim {
namespace {

constexpr const char* networkInterface = "fi.w1.wpa_supplicant1.Network";

using vtable::property;

}  // namespace

const sd_bus_vtable NetworkObject::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    property(
        "Properties",
        [](const NetworkObject& o) {
            Dictionary shown;
            for (const auto& [name, value] : o.network_.config.shown()) {
                shown.emplace_back(name, value);
            }
            return shown;
        },
        [](NetworkObject& o, const Settings& settings) {
            if (!o.network_.config.setAll(settings, o.eapMethods_)) {
                throw BusError(SD_BUS_ERROR_INVALID_ARGS, "invalid message format");
            }
        }),
    property(
        "Enabled", [](const NetworkObject& o) { return o.network_.config.enabled(); },
        [](NetworkObject& o, bool enabled) { o.setEnabled_(enabled); }),
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

}  // namespace kaz::sim
