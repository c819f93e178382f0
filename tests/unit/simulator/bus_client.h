#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/bus/handles.h"
#include "support/waiting/waiting.h"

namespace kaz::sim::test {

using kaz::test::eventually;
using kaz::test::timeLimit;

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
    nlohmann::json arguments;
};

struct Target {
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
    nlohmann::json call(const Target& target, const char* member, const char* types = "",
                        Arguments... arguments) {
        const Message message = newCall(target, member);
        checked(sd_bus_message_append(message.get(), types, arguments...), "append");
        return send(message.get());
    }

    nlohmann::json get(const Target& target, const char* property);

    // Waits until the condition is true, and receives signals meanwhile.
    bool waitUntil(const std::function<bool()>& condition);

    // Waits for a signal of this member for which the condition is true. Drops it and all earlier signals.
    bool waitForSignal(const std::string& member, const std::function<bool(const Signal&)>& condition);

    // Every value of this property in the PropertiesChanged signals so far.
    std::vector<nlohmann::json> valuesOf(const std::string& property) const;

    // Members of all signals so far, in order.
    std::vector<Signal>& signals() noexcept { return signals_; }

    std::string ownerOf(const char* name);

    Message newCall(const Target& target, const char* member);
    nlohmann::json send(sd_bus_message* message);

    sd_bus* bus() noexcept { return bus_.get(); }

  private:
    Bus bus_;
    Slot match_;
    std::vector<Signal> signals_;
};

}  // namespace kaz::sim::test
