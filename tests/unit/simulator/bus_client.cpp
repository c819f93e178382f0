#include "unit/simulator/bus_client.h"

#include "simulator/bus/message_json.h"

#include <algorithm>
#include <cstdint>

namespace kaz::sim::test {
namespace {

Signal read(sd_bus_message* message) {
    const auto text = [](const char* value) { return value == nullptr ? std::string() : std::string(value); };
    return {text(sd_bus_message_get_sender(message)), text(sd_bus_message_get_path(message)),
            text(sd_bus_message_get_interface(message)), text(sd_bus_message_get_member(message)),
            json::parse(argumentsAsJson(message))};
}

}  // namespace

json Signal::changes() const {
    return interface == "org.freedesktop.DBus.Properties" ? arguments.at(1) : json::object();
}

BusClient::BusClient(const std::string& address) : bus_(dbus::connectTo(address)) {
    checked(sd_bus_add_match(
                bus_.get(), dbus::out(match_), "type='signal'",
                [](sd_bus_message* message, void* self, sd_bus_error*) {
                    static_cast<BusClient*>(self)->signals_.push_back(read(message));
                    return 0;
                },
                this),
            "match");
}

Message BusClient::emptyCall(const Target& target, const char* member) {
    Message call;
    checked(sd_bus_message_new_method_call(bus_.get(), dbus::out(call), target.service.c_str(),
                                           target.path.c_str(), target.interface.c_str(), member),
            "new call");
    return call;
}

Message BusClient::replyTo(const Message& call, std::chrono::microseconds limit) {
    dbus::BusError error;
    Message reply;
    if (sd_bus_call(bus_.get(), call.get(), static_cast<std::uint64_t>(limit.count()), &error.value,
                    dbus::out(reply)) < 0) {
        throw CallFailed(error.value.name, error.value.message == nullptr ? "" : error.value.message);
    }
    return reply;
}

json BusClient::send(const Message& call) {
    return json::parse(argumentsAsJson(replyTo(call).get()));
}

json BusClient::get(const Target& target, const char* property) {
    return call(target.properties(), "Get", "ss", target.interface.c_str(), property).at(0);
}

json BusClient::getAll(const Target& target) {
    return call(target.properties(), "GetAll", "s", target.interface.c_str()).at(0);
}

bool BusClient::waitUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + timeLimit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        if (checked(sd_bus_process(bus_.get(), nullptr), "process") == 0) {
            checked(sd_bus_wait(bus_.get(), 10'000), "wait");
        }
    }
    return true;
}

bool BusClient::waitForSignal(const std::string& member,
                              const std::function<bool(const Signal&)>& condition) {
    const auto wanted = [&](const Signal& signal) { return signal.member == member && condition(signal); };
    return waitUntil([&] {
        const auto found = std::find_if(signals_.begin(), signals_.end(), wanted);
        const bool came = found != signals_.end();
        if (came) {
            signals_.erase(signals_.begin(), found + 1);
        }
        return came;
    });
}

bool BusClient::waitForSignalOf(const std::string& member, const json& first) {
    return waitForSignal(member, [&](const Signal& signal) { return signal.arguments.at(0) == first; });
}

std::vector<json> BusClient::valuesOf(const std::string& property) const {
    std::vector<json> values;
    for (const Signal& signal : signals_) {
        if (const json changes = signal.changes(); changes.contains(property)) {
            values.push_back(changes.at(property));
        }
    }
    return values;
}

bool BusClient::becomes(const std::string& property, const json& value) {
    return waitUntil([&] {
        const auto values = valuesOf(property);
        return !values.empty() && values.back() == value;
    });
}

std::string BusClient::ownerOf(const char* name) {
    const Target daemon{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
    try {
        return call(daemon, "GetNameOwner", "s", name).at(0);
    } catch (const CallFailed&) {
        return {};
    }
}

}  // namespace kaz::sim::test
