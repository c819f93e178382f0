#pragma once

#include "simulator/bus/handles.h"
#include "support/waiting/waiting.h"

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kaz::sim::test {

using kaz::test::eventually;
using kaz::test::timeLimit;
using nlohmann::json;

// The error reply to a call; what() is its text.
class CallFailed : public std::runtime_error {
  public:
    CallFailed(std::string name, const std::string& text)
        : std::runtime_error(text), name_(std::move(name)) {}
    const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
};

struct Signal {
    std::string sender = {};
    std::string path = {};
    std::string interface = {};
    std::string member = {};
    json arguments = {};

    // The values of a standard PropertiesChanged signal; an empty object for other signals.
    json changes() const;
};

struct Target {
    // The same object's org.freedesktop.DBus.Properties.
    Target properties() const { return {service, path, "org.freedesktop.DBus.Properties"}; }

    std::string service;
    std::string path;
    std::string interface;
};

// A client of the simulated services that receives every signal on the bus.
class BusClient {
  public:
    explicit BusClient(const std::string& address);

    // The reply's arguments as a JSON array. Throws CallFailed.
    template <typename... Arguments>
    json call(const Target& target, const char* member, const char* types = "", Arguments... arguments) {
        return send(newCall(target, member, types, arguments...));
    }

    json get(const Target& target, const char* property);
    json getAll(const Target& target);
    template <typename... Values>
    void set(const Target& target, const char* property, const char* types, Values... values) {
        call(target.properties(), "Set", "ssv", target.interface.c_str(), property, types, values...);
    }

    // Waits until the condition is true, and receives signals meanwhile.
    bool waitUntil(const std::function<bool()>& condition);

    // Waits for a signal of this member for which the condition is true. Drops it and all earlier signals.
    bool waitForSignal(
        const std::string& member,
        const std::function<bool(const Signal&)>& condition = [](const Signal&) { return true; });

    // The same for a signal whose first argument is this.
    bool waitForSignalOf(const std::string& member, const json& first);

    // Every value of this property in the PropertiesChanged signals so far.
    std::vector<json> valuesOf(const std::string& property) const;

    // Waits until the last of these is this value.
    bool becomes(const std::string& property, const json& value);

    // All signals so far, in order.
    std::vector<Signal>& signals() noexcept { return signals_; }

    std::string ownerOf(const char* name);

    template <typename... Arguments>
    Message newCall(const Target& target, const char* member, const char* types = "",
                    Arguments... arguments) {
        Message message = emptyCall(target, member);
        checked(sd_bus_message_append(message.get(), types, arguments...), "append");
        return message;
    }

    // The reply, and its arguments as a JSON array. Throw CallFailed.
    Message replyTo(const Message& call, std::chrono::microseconds limit = timeLimit);
    json send(const Message& call);

    sd_bus* bus() noexcept { return bus_.get(); }

  private:
    Message emptyCall(const Target& target, const char* member);

    Bus bus_;
    Slot match_;
    std::vector<Signal> signals_;
};

}  // namespace kaz::sim::test
