#pragma once

#include "unit/communicator/communicator_fixture.h"

#include <functional>
#include <iosfwd>
#include <vector>

namespace kaz::wifi {

// One call on the bus, and the operation that makes it.
struct FaultOperation {
    enum class Peer { systemd, supplicant, networkd };
    enum class Kind { method, get, set, getAll };

    std::string name;
    Peer peer = Peer::supplicant;
    Kind kind = Kind::method;
    std::string path;
    std::string interface;
    std::string member;  // the method or property; empty for all properties

    // A good reply, and a good reply as large as possible: 64 KiB for a path, about a megabyte for other types. Without a
    // huge one, the library does not read the reply.
    Answer good;
    Answer huge;

    // Both run on the loop thread. `run` returns the result of the operation; the handlers record its reports.
    std::function<void(DbusCommunicator&)> prepare;
    std::function<std::string(DbusCommunicator&)> run;

    // The result of `run`, then the reports.
    std::string goodOutcome;
    std::string failedOutcome;
    std::string hugeOutcome;   // as goodOutcome when empty
    std::string deathOutcome;  // as failedOutcome when empty: calls that follow fail too

    // The call holds a secret, so its log record has only the error's name.
    bool sensitive = false;
    // The error of sd-bus for a reply with other containers.
    std::string wrongNesting = "No such device or address";

    // The log at warning level and above, after the record of the failed call or of the undecodable reply. {} stands for
    // the error of the reply.
    std::vector<LogRecord> alsoLogged;
    std::vector<LogRecord> alsoLoggedWhenUndecodable;  // as alsoLogged when empty
    std::vector<LogRecord> alsoLoggedOnDeath;          // as alsoLogged when empty
    std::vector<LogRecord> loggedWhenHuge;
};

std::vector<FaultOperation> faultOperations();

// The longest path that sd-bus accepts.
extern const std::string longestPath;

// The record of a call that failed.
LogRecord failedCall(FaultOperation::Peer peer, const std::string& member, const std::string& error);

// The call as the peer records it. Arguments are omitted unless they distinguish it from other calls.
std::string noteOf(const FaultOperation& operation);

void PrintTo(const FaultOperation& operation, std::ostream* out);

}  // namespace kaz::wifi
