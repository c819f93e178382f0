#include "support/bus_peer/bus_peer.h"

#include "base/checked.h"

#include <stdlib.h>

#include <string_view>

namespace kaz::test {

BusPeer::BusPeer(const std::string& name)
    : connection_(
          ::getenv("DBUS_SYSTEM_BUS_ADDRESS"),
          [this](sd_bus* bus) {
              const char* unique = nullptr;
              checked(sd_bus_get_unique_name(bus, &unique), "sd_bus_get_unique_name");
              uniqueName_ = unique;
          },
          [this](sd_bus_message* message) { answer(message); }) {
    if (!name.empty()) {
        own(name);
    }
}

void BusPeer::own(const std::string& name) {
    connection_.run(
        [&](sd_bus* bus) { checked(sd_bus_request_name(bus, name.c_str(), 0), "sd_bus_request_name"); });
}

void BusPeer::disown(const std::string& name) {
    connection_.run(
        [&](sd_bus* bus) { checked(sd_bus_release_name(bus, name.c_str()), "sd_bus_release_name"); });
}

void BusPeer::emit(const Signal& signal, const Append& arguments, const std::string& destination) {
    connection_.run([&](sd_bus* bus) {
        dbus::MessagePtr message;
        checked(sd_bus_message_new_signal(bus, dbus::out(message), signal.path.c_str(),
                                          signal.interface.c_str(), signal.member.c_str()),
                "sd_bus_message_new_signal");
        arguments(message.get());
        if (!destination.empty()) {
            checked(sd_bus_message_set_destination(message.get(), destination.c_str()), "set_destination");
        }
        checked(sd_bus_send(bus, message.get(), nullptr), "sd_bus_send");
    });
}

void BusPeer::emit(const Signal& signal, const std::string& argument, const std::string& destination) {
    emit(signal, values("s", argument), destination);
}

void BusPeer::emitOwnerChange(const std::string& name, const std::string& former, const std::string& present,
                              const std::string& destination) {
    emit({"/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged"},
         values("sss", name, former, present), destination);
}

void BusPeer::settle() {
    connection_.run([](sd_bus* bus) {
        checked(sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                   "org.freedesktop.DBus", "GetId", nullptr, nullptr, ""),
                "GetId");
    });
}

void BusPeer::receive(const Signal& signal) {
    const auto count = [](sd_bus_message*, void* peer, sd_bus_error*) {
        ++static_cast<BusPeer*>(peer)->received_;
        return 0;
    };
    connection_.run([&](sd_bus* bus) {
        checked(sd_bus_match_signal(bus, nullptr, nullptr, signal.path.c_str(), signal.interface.c_str(),
                                    signal.member.c_str(), count, this),
                "sd_bus_match_signal");
    });
}

void BusPeer::answer(sd_bus_message* message) {
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) {
        return;
    }
    const char* first = "";
    if (sd_bus_message_has_signature(message, "") == 0) {
        sd_bus_message_read(message, "s", &first);
    }
    const std::string_view member = sd_bus_message_get_member(message);
    callers_.add(sd_bus_message_get_sender(message));
    calls_.add(std::string(member) + '(' + first + ')');
    if (member == "Echo") {
        sd_bus_reply_method_return(message, "s", first);
    } else if (member == "Refuse") {
        sd_bus_reply_method_errorf(message, "test.Error.Refused", "will not take %s", first);
    } else if (member == "Get") {
        const char* property = nullptr;
        sd_bus_message_read(message, "s", &property);
        const std::string value = std::string("value of ") + first + '.' + property;
        sd_bus_reply_method_return(message, "v", "s", value.c_str());
    } else if (member == "Set") {
        sd_bus_reply_method_return(message, "");
    }
}

}  // namespace kaz::test
