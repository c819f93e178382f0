#include "simulator/supplicant/supplicant.h"

#include "simulator/bus/vtable.h"

#include <algorithm>
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
           [](Supplicant& s, const std::string& name) {
               if (name != "wlan0" || !s.interface_) {
                   throw BusError("fi.w1.wpa_supplicant1.InterfaceUnknown",
                                  "wpa_supplicant knows nothing about this interface.");
               }
               return ObjectPath(s.interface_->path());
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
             [](const Supplicant& s) { return std::vector<ObjectPath>(s.paths_.begin(), s.paths_.end()); }),
    SD_BUS_VTABLE_END,
};

Supplicant::Supplicant(const Environment& environment, const Neighbourhood& neighbourhood,
                       InterfaceObject::Storage& storage, std::function<void()> stateChanged,
                       std::function<void()> crash)
    : environment_(environment),
      neighbourhood_(neighbourhood),
      storage_(storage),
      stateChanged_(std::move(stateChanged)),
      connection_(environment, "supplicant", std::move(crash)),
      slot_(connection_.serve(rootPath, busName, vtable_, this)) {
    connection_.own(busName);
    if (neighbourhood.interface) {
        addInterface();
    }
    for (unsigned i = 0; i < neighbourhood.moreInterfaces; ++i) {
        paths_.push_back(newPath());
    }
}

void Supplicant::withdraw() {
    if (interface_) {
        interface_->withdraw();
    }
    for (const std::string& path : paths_) {
        signalRemoved(path);
    }
    connection_.flush();
}

void Supplicant::addInterface() {
    if (interface_) {
        return;
    }
    interface_ = std::make_unique<InterfaceObject>(connection_, environment_.scheduler, neighbourhood_,
                                                   storage_, newPath(), stateChanged_);
    announce(interface_->path(), &interface_->properties());
    interface_->start();
}

void Supplicant::removeInterface() {
    if (interface_) {
        interface_->withdraw();
        remove(interface_->path());
        interface_.reset();
        stateChanged_();
    }
}

void Supplicant::addOtherInterface() {
    announce(newPath(), nullptr);
}

void Supplicant::removeOtherInterface() {
    const auto other = std::find_if(paths_.begin(), paths_.end(), [this](const std::string& path) {
        return !interface_ || path != interface_->path();
    });
    if (other != paths_.end()) {
        remove(*other);
    }
}

std::string Supplicant::newPath() {
    return std::string(rootPath) + "/Interfaces/" + std::to_string(nextNumber_++);
}

void Supplicant::announce(const std::string& path, const PropertySource* properties) {
    paths_.insert(paths_.begin(), path);
    const Message signal = newSignal(connection_.bus(), rootPath, busName, "InterfaceAdded");
    checked(sd_bus_message_append(signal.get(), "o", path.c_str()), "append path");
    if (properties == nullptr) {
        checked(sd_bus_message_append(signal.get(), "a{sv}", 0), "append properties");
    } else {
        appendProperties(signal.get(), *properties, {});
    }
    sd_bus_send(connection_.bus(), signal.get(), nullptr);
}

void Supplicant::remove(const std::string& path) {
    signalRemoved(path);
    paths_.erase(std::find(paths_.begin(), paths_.end(), path));
}

void Supplicant::signalRemoved(const std::string& path) {
    sd_bus_emit_signal(connection_.bus(), rootPath, busName, "InterfaceRemoved", "o", path.c_str());
}

}  // namespace kaz::sim
