#include "simulator/supplicant/supplicant.h"

#include <string_view>
#include <utility>

#include "simulator/bus/vtable.h"

namespace kaz::sim {
namespace {

constexpr const char* busName = "fi.w1.wpa_supplicant1";
constexpr const char* rootPath = "/fi/w1/wpa_supplicant1";

}  // namespace

const sd_bus_vtable Supplicant::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("GetInterface", "s", "o", vtable::method<&Supplicant::getInterface>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("InterfaceAdded", "oa{sv}", 0),
    SD_BUS_SIGNAL("InterfaceRemoved", "o", 0),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    SD_BUS_PROPERTY("Capabilities", "as", vtable::get<&Supplicant::capabilities>, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("EapMethods", "as", vtable::get<&Supplicant::eapMethods>, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Interfaces", "ao", vtable::get<&Supplicant::interfaces>, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
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

void Supplicant::getInterface(sd_bus_message* call) {
    const char* name = nullptr;
    checked(sd_bus_message_read(call, "s", &name), "read");
    if (std::string_view(name) != "wlan0") {
        throw BusError("fi.w1.wpa_supplicant1.InterfaceUnknown",
                       "wpa_supplicant knows nothing about this interface.");
    }
    reply(call, "o", InterfaceObject::path);
}

void Supplicant::capabilities(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "as", 3, "ap", "pmf", "sha384"), "append");
}

void Supplicant::eapMethods(sd_bus_message* out) const {
    checked(sd_bus_message_open_container(out, 'a', "s"), "open array");
    for (const std::string& method : neighbourhood_.eapMethods) {
        checked(sd_bus_message_append_basic(out, 's', method.c_str()), "append");
    }
    checked(sd_bus_message_close_container(out), "close array");
}

void Supplicant::interfaces(sd_bus_message* out) const {
    checked(sd_bus_message_open_container(out, 'a', "o"), "open array");
    checked(sd_bus_message_append_basic(out, 'o', InterfaceObject::path), "append");
    for (unsigned number = 1; number <= neighbourhood_.moreInterfaces; ++number) {
        const std::string path = "/fi/w1/wpa_supplicant1/Interfaces/" + std::to_string(number);
        checked(sd_bus_message_append_basic(out, 'o', path.c_str()), "append");
    }
    checked(sd_bus_message_close_container(out), "close array");
}

}  // namespace kaz::sim
