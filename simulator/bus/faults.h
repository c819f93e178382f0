#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/bus/call_log.h"

namespace kaz::sim {

enum class FaultKind {
    error,         // an error reply with the fault's name and text
    noReply,       // nothing at all, ever
    delay,         // the call is served, but later
    wrongType,     // a reply whose values have other types than usual
    wrongNesting,  // a reply whose containers are not the usual ones
    emptyValue,    // a dictionary without entries, a property that is an empty array or text
    noBody,        // a reply without arguments
    vanished,      // what the bus library answers for an object that is gone
    crash,         // the service falls off the bus instead of answering
};

// "error", "no-reply", "delay", "wrong-type", "wrong-nesting", "empty-value", "no-body", "vanished", "crash".
std::optional<FaultKind> faultKindFromText(std::string_view text);

// Something that goes wrong with calls of one member of one service. Empty texts match everything.
struct Fault {
    std::string peer;      // "supplicant", "systemd" or "networkd"
    std::string member;    // "GetAll", "Get", "AddNetwork"
    std::string path;      // of the object called
    std::string argument;  // a text that is one of the arguments, such as a property's or interface's name
    unsigned nth = 0;      // only the nth of the calls that match, 1 being the next one; 0 for all of them
    FaultKind kind = FaultKind::error;
    std::string errorName = "org.freedesktop.DBus.Error.Failed";
    std::string errorText = "ordered fault";
    std::chrono::milliseconds delay{0};  // real time
};

using FaultId = unsigned;

// The faults that are ordered at present. Loop thread only.
class Faults {
  public:
    FaultId order(Fault fault);
    void clear();

    // How often the fault has struck; also after clear(). 0 for one that was never ordered.
    unsigned timesFired(FaultId id) const;

    // The fault that strikes this call, oldest order first, which then counts as fired.
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
