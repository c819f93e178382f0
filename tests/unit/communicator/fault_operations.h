#pragma once

#include "unit/communicator/communicator_fixture.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace kaz::wifi {

// One call that the library makes, and the operation that makes it.
struct FaultOperation {
    enum class Peer { systemd, supplicant, networkd };
    enum class Kind { method, get, set, getAll };

    std::string name;
    Peer peer = Peer::supplicant;
    Kind kind = Kind::method;
    std::string path;
    std::string interface;
    std::string member;  // the method or property; empty for all properties

    // What the peer says when all is well, and a good answer as large as its type can be: a path of 64 KiB, anything
    // else of about a megabyte. Without the latter, what the answer holds does not matter.
    Answer good;
    Answer huge;

    // Both on the loop thread. The result of `run` is what the operation returned; what it published besides is noted
    // by the handlers.
    std::function<void(DbusCommunicator&)> prepare;
    std::function<std::string(DbusCommunicator&)> run;

    // What `run` returned and what was published, one after the other.
    std::string goodOutcome;
    std::string failedOutcome;
    std::string hugeOutcome;   // as goodOutcome when empty
    std::string deathOutcome;  // as failedOutcome when empty: calls that follow fail too

    // The call carries what no log may show, so that its record has no more than the error's name.
    bool sensitive = false;
    // What sd-bus says of an answer with other containers.
    std::string wrongNesting = "No such device or address";

    // The log at warning level and above, after the record of the failed call or of the undecodable answer. {} stands
    // for what is wrong with the answer.
    std::vector<LogRecord> alsoLogged;
    std::vector<LogRecord> alsoLoggedWhenUndecodable;  // as alsoLogged when empty
    std::vector<LogRecord> alsoLoggedOnDeath;          // as alsoLogged when empty
    std::vector<LogRecord> loggedWhenHuge;
};

std::vector<FaultOperation> faultOperations();

// sd-bus knows none that is longer.
extern const std::string longestPath;

// The record of a call that failed.
LogRecord failedCall(FaultOperation::Peer peer, const std::string& member, const std::string& error);

// The call as the peer notes it, without its arguments where they do not tell it from others.
std::string noteOf(const FaultOperation& operation);

void PrintTo(const FaultOperation& operation, std::ostream* out);

}  // namespace kaz::wifi
