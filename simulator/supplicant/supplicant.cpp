#include "simulator/supplicant/supplicant.h"

#include "simulator/bus/vtable.h"

#include <string>
#include <utility>

namespace kaz::sim {
namespace {

constexpr const char* busName = "fi.w1.wpa_supplicant1";
constexpr const char* rootPath = "/fi/w1/wpa_supplicant1";

using vtable::method;
using vtable::property;

}  // namespace

const sd_bus_vtable Supplicant::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    method("GetInterface",
           [](Supplicant&, const std::string& name) {
               if (name != "wlan0") {
                   throw BusError("fi.w1.wpa_supplicant1.InterfaceUnknown",
                                  "wpa_supplicant knows nothing about this interface.");
               }
               return ObjectPath(InterfaceObject::path);
           }),
    SD_BUS_SIGNAL("InterfaceAdded", "oa{sv}", 0),
    SD_BUS_SIGNAL("InterfaceRemoved", "o", 0),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    property("Capabilities",
             [](const Supplicant&) {
                 return Words{"ap", "pmf", "sha384"};
             }),
    property("EapMethods", [](const Supplicant& s) { return s.neighbourhood_.eapMethods; }),
    property("Interfaces",
             [](const Supplicant& s) {
                 std::vector paths{ObjectPath(InterfaceObject::path)};
                 for (unsigned number = 1; number <= s.neighbourhood_.moreInterfaces; ++number) {
                     paths.emplace_back("/fi/w1/wpa_supplicant1/Interfaces/" + std::to_string(number));
                 }
                 return paths;
             }),
    SD_BUS_VTABLE_END,
};

Supplicant::Supplicant(const Environment& environment, const Neighbourhood& neighbourhood,
                       InterfaceObject::Storage& storage, std::function<void()> stateChanged,
                       std::function<void()> crash)
    : neighbourhood_(neighbourhood),
      connection_(environment, "supplicant", std::move(crash)),
      slot_(connection_.serve(rootPath, busName, vtable_, this)),
      interface_(connection_, environment.scheduler, neighbourhood, storage, std::move(stateChanged)) {
    connection_.own(busName);
    interface_.start();
}

void Supplicant::withdraw() {
    interface_.withdraw();
    sd_bus_emit_signal(connection_.bus(), rootPath, busName, "InterfaceRemoved", "o", InterfaceObject::path);
    connection_.flush();
}

}  // namespace kaz::sim
