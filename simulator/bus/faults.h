#pragma once

#include "simulator/bus/call_log.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kaz::sim {

enum class FaultKind {
    error,         // an error reply with the fault's name and text
    noReply,       // no reply, ever
    delay,         // the normal reply, but later
    wrongType,     // a reply with values of other types
    wrongNesting,  // a reply with other containers
    emptyValue,    // an empty dictionary, or a property that is an empty array or string
    noBody,        // a reply without arguments
    vanished,      // the bus library's error for an object that does not exist
    crash,         // the service leaves the bus instead of replying
};

// "error", "no-reply", "delay", "wrong-type", "wrong-nesting", "empty-value", "no-body", "vanished", "crash".
std::optional<FaultKind> faultKindFromText(std::string_view text);

// A fault for the calls that match. Empty strings match everything.
struct Fault {
    std::string peer = {};      // "supplicant", "systemd" or "networkd"
    std::string member = {};    // "GetAll", "Get", "AddNetwork"
    std::string path = {};      // of the called object
    std::string argument = {};  // a string argument, such as a property's or interface's name
    unsigned nth = 0;           // only the nth matching call, 1 is the next one; 0 for all of them
    FaultKind kind = FaultKind::error;
    std::string errorName = "org.freedesktop.DBus.Error.Failed";
    std::string errorText = "ordered fault";
    std::chrono::milliseconds delay{0};  // real time
};

using FaultId = unsigned;

// The current faults. For the loop thread only.
class Faults {
  public:
    FaultId order(Fault fault);
    void clear();

    // How often the fault was applied, also after clear(). 0 for an unknown fault.
    unsigned timesFired(FaultId id) const;

    // Returns the oldest fault that matches this call and counts it as applied.
    std::optional<Fault> strike(const Call& call);

  private:
    struct Ordered {
        Fault fault;
        unsigned matched = 0;
        unsigned fired = 0;
        bool active = true;
    };

    std::map<FaultId, Ordered> faults_;
};

}  // namespace kaz::sim
