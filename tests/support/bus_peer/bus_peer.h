#pragma once

#include "base/non_copyable.h"
#include "support/call_log/call_log.h"
#include "support/scripted_peer/answers.h"
#include "support/scripted_peer/bus_thread.h"

#include <atomic>
#include <string>
#include <vector>

namespace kaz::test {

// Another client of the system bus, with its own thread. Each of its object paths answers:
//   Echo(s) -> s        the argument
//   Refuse(s)           the error "test.Error.Refused" with the text "will not take ARGUMENT"
//   Ignore(s)           never
//   Get(ss) -> v        the string "value of INTERFACE.PROPERTY"
//   Set(ssv)            an empty reply
class BusPeer : NonCopyable {
  public:
    // Owns this name; none if it is empty.
    explicit BusPeer(const std::string& name = "");

    const std::string& uniqueName() const { return uniqueName_; }

    void own(const std::string& name);
    void disown(const std::string& name);

    struct Signal {
        std::string path;
        std::string interface;
        std::string member;
    };
    // Broadcast, or for `destination` alone.
    void emit(const Signal& signal, const Append& arguments, const std::string& destination = "");
    void emit(const Signal& signal, const std::string& argument, const std::string& destination = "");

    // The bus's own NameOwnerChanged, as only the bus may send it.
    void emitOwnerChange(const std::string& name, const std::string& former, const std::string& present,
                         const std::string& destination);

    // Returns when the bus has delivered all emitted signals.
    void settle();

    // "MEMBER(FIRST ARGUMENT)" of the calls so far.
    std::vector<std::string> calls() const { return calls_.calls(); }
    bool waitForCall(const std::string& call) const { return calls_.waitForCall(call); }
    // The unique name of the last caller.
    std::string caller() const { return callers_.calls().back(); }

    // The number of signals received, as subscribed to by receive().
    void receive(const Signal& signal);
    std::size_t received() const { return received_; }

  private:
    void answer(sd_bus_message* message);

    std::string uniqueName_;
    CallLog calls_;
    CallLog callers_;
    std::atomic<std::size_t> received_ = 0;
    BusThread connection_;
};

}  // namespace kaz::test
