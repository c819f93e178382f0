#include "simulator/bus/connection.h"

#include "simulator/bus/message_json.h"
#include "simulator/bus/spoilt_reply.h"
#include "simulator/bus/vtable.h"

#include <cstring>
#include <utility>

namespace kaz::sim {
namespace {

Bus connect(const Environment& environment) {
    Bus bus = dbus::connectTo(environment.busAddress);
    checked(sd_bus_attach_event(bus.get(), environment.scheduler.event(), SD_EVENT_PRIORITY_NORMAL),
            "attach");
    return bus;
}

const char* uniqueName(sd_bus* bus) {
    const char* name = nullptr;
    checked(sd_bus_get_unique_name(bus, &name), "unique name");
    return name;
}

bool isCall(sd_bus_message* message) {
    const char* const interface = sd_bus_message_get_interface(message);
    return sd_bus_message_is_method_call(message, nullptr, nullptr) > 0 && interface != nullptr &&
           std::strcmp(interface, "org.freedesktop.DBus.Peer") != 0;
}

// Sends the reply of a forwarded call to the original caller.
int relay(sd_bus_message* answer, void* data, sd_bus_error* error) {
    auto* const call = static_cast<sd_bus_message*>(data);
    if (sd_bus_message_is_method_error(answer, nullptr) > 0) {
        return sd_bus_reply_method_error(call, sd_bus_message_get_error(answer));
    }
    return vtable::guarded(error, [&] {
        const Message copy = newReply(call);
        checked(sd_bus_message_copy(copy.get(), answer, 1), "copy");
        send(copy);
    });
}

}  // namespace

Connection::Connection(const Environment& environment, std::string peer, std::function<void()> onCrash)
    : environment_(environment),
      peer_(std::move(peer)),
      onCrash_(std::move(onCrash)),
      bus_(connect(environment)) {
    if (peer_.empty()) {
        return;
    }
    checked(sd_bus_add_filter(
                bus_.get(), dbus::out(filter_),
                [](sd_bus_message* message, void* self, sd_bus_error* error) {
                    int handled = 0;
                    const int result = vtable::guarded(
                        error, [&] { handled = static_cast<Connection*>(self)->received(message) ? 1 : 0; });
                    return result < 0 ? result : handled;
                },
                this),
            "sd_bus_add_filter");
}

Connection::~Connection() = default;

void Connection::own(const char* name) {
    checked(sd_bus_request_name(bus_.get(), name, 0), name);
}

void Connection::flush() {
    sd_bus_flush(bus_.get());
}

Slot Connection::serve(const std::string& path, const char* interface, const sd_bus_vtable* vtable,
                       void* object) {
    Slot slot;
    checked(sd_bus_add_object_vtable(bus_.get(), dbus::out(slot), path.c_str(), interface, vtable, object),
            interface);
    return slot;
}

bool Connection::received(sd_bus_message* message) {
    const char* const sender = sd_bus_message_get_sender(message);
    const bool comesBack =
        forwarder_ && sender != nullptr && std::strcmp(sender, uniqueName(forwarder_.get())) == 0;
    if (!isCall(message) || comesBack) {
        return false;
    }
    const Call call{peer_, sd_bus_message_get_path(message), sd_bus_message_get_interface(message),
                    sd_bus_message_get_member(message), argumentsAsJson(message)};
    environment_.log.add(call);
    const auto fault = environment_.faults.strike(call);
    if (fault) {
        suffer(*fault, message);
    }
    return fault.has_value();
}

void Connection::suffer(const Fault& fault, sd_bus_message* call) {
    switch (fault.kind) {
        case FaultKind::noReply:
            return;
        case FaultKind::delay:
            serveLater(fault, call);
            return;
        case FaultKind::crash:
            if (onCrash_) {
                crash_ = environment_.scheduler.soon(onCrash_);
            }
            return;
        case FaultKind::error:
        case FaultKind::wrongType:
        case FaultKind::wrongNesting:
        case FaultKind::emptyValue:
        case FaultKind::noBody:
        case FaultKind::vanished:
            spoiltReply(fault, call);
            return;
    }
}

void Connection::serveLater(const Fault& fault, sd_bus_message* call) {
    if (!forwarder_) {
        forwarder_ = connect(environment_);
    }
    const unsigned number = delays_++;
    delayed_.emplace(number,
                     environment_.scheduler.afterRealTime(
                         fault.delay, [this, number, kept = std::shared_ptr<sd_bus_message>(share(call))] {
                             forward(kept.get());
                             delayed_.erase(number);
                         }));
}

void Connection::forward(sd_bus_message* call) {
    Message again;
    checked(sd_bus_message_new_method_call(forwarder_.get(), dbus::out(again), uniqueName(bus_.get()),
                                           sd_bus_message_get_path(call), sd_bus_message_get_interface(call),
                                           sd_bus_message_get_member(call)),
            "new call");
    checked(sd_bus_message_rewind(call, 1), "rewind");
    checked(sd_bus_message_copy(again.get(), call, 1), "copy");
    Slot slot;
    checked(
        sd_bus_call_async(forwarder_.get(), dbus::out(slot), again.get(), relay, sd_bus_message_ref(call), 0),
        "call");
    checked(sd_bus_slot_set_destroy_callback(
                slot.get(), [](void* data) { sd_bus_message_unref(static_cast<sd_bus_message*>(data)); }),
            "slot");
    checked(sd_bus_slot_set_floating(slot.get(), 1), "slot");
}

}  // namespace kaz::sim
