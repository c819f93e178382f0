#include "simulator/bus/property_signals.h"

#include <algorithm>
#include <utility>

namespace kaz::sim {
namespace {

void appendProperty(sd_bus_message* out, const PropertySource& source, const sd_bus_vtable& entry) {
    const auto& property = entry.x.property;
    checked(sd_bus_message_open_container(out, 'e', "sv"), "open entry");
    checked(sd_bus_message_append_basic(out, 's', property.member), "append key");
    checked(sd_bus_message_open_container(out, 'v', property.signature), "open variant");
    sd_bus_error error{};
    const int result = property.get(source.bus, source.path.c_str(), source.interface.c_str(),
                                    property.member, out, source.object, &error);
    sd_bus_error_free(&error);
    checked(result, property.member);
    checked(sd_bus_message_close_container(out), "close variant");
    checked(sd_bus_message_close_container(out), "close entry");
}

bool isProperty(const sd_bus_vtable& entry) {
    return entry.type == _SD_BUS_VTABLE_PROPERTY || entry.type == _SD_BUS_VTABLE_WRITABLE_PROPERTY;
}

Message newSignal(const PropertySource& source, const char* interface) {
    sd_bus_message* raw = nullptr;
    checked(sd_bus_message_new_signal(source.bus, &raw, source.path.c_str(), interface, "PropertiesChanged"),
            "new signal");
    return Message(raw);
}

}  // namespace

void appendProperties(sd_bus_message* out, const PropertySource& source,
                      const std::vector<std::string>& names) {
    checked(sd_bus_message_open_container(out, 'a', "{sv}"), "open dictionary");
    for (const sd_bus_vtable* entry = source.vtable; names.empty() && entry->type != _SD_BUS_VTABLE_END;
         ++entry) {
        if (isProperty(*entry)) {
            appendProperty(out, source, *entry);
        }
    }
    for (const std::string& name : names) {
        const sd_bus_vtable* entry = source.vtable;
        while (entry->type != _SD_BUS_VTABLE_END &&
               !(isProperty(*entry) && name == entry->x.property.member)) {
            ++entry;
        }
        if (entry->type != _SD_BUS_VTABLE_END) {
            appendProperty(out, source, *entry);
        }
    }
    checked(sd_bus_message_close_container(out), "close dictionary");
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
    const Message standard = newSignal(source_, "org.freedesktop.DBus.Properties");
    checked(sd_bus_message_append(standard.get(), "s", source_.interface.c_str()), "append interface");
    appendProperties(standard.get(), source_, names);
    checked(sd_bus_message_append(standard.get(), "as", 0), "append invalidated");
    checked(sd_bus_send(source_.bus, standard.get(), nullptr), "send PropertiesChanged");
    if (ownSignal_) {
        const Message own = newSignal(source_, source_.interface.c_str());
        appendProperties(own.get(), source_, names);
        checked(sd_bus_send(source_.bus, own.get(), nullptr), "send PropertiesChanged");
    }
}

}  // namespace kaz::sim
