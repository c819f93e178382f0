#include "simulator/bus/property_signals.h"

#include "simulator/bus/values.h"

#include <algorithm>
#include <utility>

namespace kaz::sim {
namespace {

void appendProperty(sd_bus_message* out, const PropertySource& source, const sd_bus_vtable& entry) {
    const auto& property = entry.x.property;
    appendContainer(out, 'e', "sv", [&] {
        Wire<std::string>::append(out, property.member);
        appendContainer(out, 'v', property.signature, [&] {
            dbus::BusError error;
            checked(property.get(source.bus, source.path.c_str(), source.interface.c_str(), property.member,
                                 out, source.object, &error.value),
                    property.member);
        });
    });
}

bool isProperty(const sd_bus_vtable& entry) {
    return entry.type == _SD_BUS_VTABLE_PROPERTY || entry.type == _SD_BUS_VTABLE_WRITABLE_PROPERTY;
}

}  // namespace

void appendProperties(sd_bus_message* out, const PropertySource& source,
                      const std::vector<std::string>& names) {
    appendContainer(out, 'a', "{sv}", [&] {
        const auto appendThose = [&](const auto& condition) {
            for (const sd_bus_vtable* entry = source.vtable; entry->type != _SD_BUS_VTABLE_END; ++entry) {
                if (isProperty(*entry) && condition(entry->x.property.member)) {
                    appendProperty(out, source, *entry);
                }
            }
        };
        if (names.empty()) {
            appendThose([](const char*) { return true; });
        }
        for (const std::string& name : names) {
            appendThose([&](const char* member) { return name == member; });
        }
    });
}

void PropertySignals::changed(const std::string& name) {
    if (std::find(names_.begin(), names_.end(), name) == names_.end()) {
        names_.push_back(name);
    }
    if (!timer_.pending()) {
        timer_ = scheduler_->soon([this] { flush(); });
    }
}

void PropertySignals::flush() {
    timer_.cancel();
    const auto names = std::exchange(names_, {});
    if (names.empty()) {
        return;
    }
    const Message standard =
        newSignal(source_.bus, source_.path, "org.freedesktop.DBus.Properties", "PropertiesChanged");
    checked(sd_bus_message_append(standard.get(), "s", source_.interface.c_str()), "append interface");
    appendProperties(standard.get(), source_, names);
    checked(sd_bus_message_append(standard.get(), "as", 0), "append invalidated");
    checked(sd_bus_send(source_.bus, standard.get(), nullptr), "send PropertiesChanged");
    if (ownSignal_) {
        const Message own = newSignal(source_.bus, source_.path, source_.interface, "PropertiesChanged");
        appendProperties(own.get(), source_, names);
        checked(sd_bus_send(source_.bus, own.get(), nullptr), "send PropertiesChanged");
    }
}

}  // namespace kaz::sim
