#include "unit/simulator/bus_client.h"

#include <algorithm>
#include <cstdint>

#include "simulator/bus/message_json.h"

namespace kaz::sim::test {
namespace {

Signal read(sd_bus_message* message) {
    const auto text = [](const char* value) { return value == nullptr ? std::string() : std::string(value); };
    return {text(sd_bus_message_get_sender(message)), text(sd_bus_message_get_path(message)),
            text(sd_bus_message_get_interface(message)), text(sd_bus_message_get_member(message)),
            nlohmann::json::parse(argumentsAsJson(message))};
}

}  // namespace

BusClient::BusClient(const std::string& address) {
    sd_bus* raw = nullptr;
    checked(sd_bus_new(&raw), "sd_bus_new");
    bus_.reset(raw);
    checked(sd_bus_set_address(raw, address.c_str()), "address");
    checked(sd_bus_set_bus_client(raw, 1), "client");
    checked(sd_bus_start(raw), "start");
    sd_bus_slot* slot = nullptr;
    checked(sd_bus_add_match(
                raw, &slot, "type='signal'",
                [](sd_bus_message* message, void* self, sd_bus_error*) {
                    static_cast<BusClient*>(self)->signals_.push_back(read(message));
                    return 0;
                },
                this),
            "match");
    match_.reset(slot);
}

Message BusClient::newCall(const Target& target, const char* member) {
    sd_bus_message* raw = nullptr;
    checked(sd_bus_message_new_method_call(bus_.get(), &raw, target.service.c_str(), target.path.c_str(),
                                           target.interface.c_str(), member),
            "new call");
    return Message(raw);
}

nlohmann::json BusClient::send(sd_bus_message* message) {
    sd_bus_error error{};
    sd_bus_message* raw = nullptr;
    if (sd_bus_call(bus_.get(), message,
                    static_cast<std::uint64_t>(std::chrono::microseconds(timeLimit).count()), &error,
                    &raw) < 0) {
        const std::string name = error.name;
        const std::string text = error.message == nullptr ? "" : error.message;
        sd_bus_error_free(&error);
        throw CallFailed(name, text);
    }
    const Message reply(raw);
    return nlohmann::json::parse(argumentsAsJson(raw));
}

nlohmann::json BusClient::get(const Target& target, const char* property) {
    const Target properties{target.service, target.path, "org.freedesktop.DBus.Properties"};
    return call(properties, "Get", "ss", target.interface.c_str(), property).at(0);
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

std::vector<nlohmann::json> BusClient::valuesOf(const std::string& property) const {
    std::vector<nlohmann::json> values;
    for (const Signal& signal : signals_) {
        if (signal.interface == "org.freedesktop.DBus.Properties" &&
            signal.arguments.at(1).contains(property)) {
            values.push_back(signal.arguments.at(1).at(property));
        }
    }
    return values;
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
