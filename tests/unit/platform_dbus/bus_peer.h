#pragma once

#include "base/non_copyable.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kaz::test {

// Another client of the bus, with a thread of its own. Every object path of it answers:
//   Echo(s) -> s        the argument
//   Refuse(s)           the error "test.Error.Refused" with the text "will not take ARGUMENT"
//   Ignore(s)           never
//   Get(ss) -> v        the string "value of INTERFACE.PROPERTY"
//   Set(ssv)            an empty reply
class BusPeer : NonCopyable {
  public:
    // Connects to the system bus.
    BusPeer();
    ~BusPeer();

    const std::string& uniqueName() const { return uniqueName_; }

    void own(const std::string& name);
    void disown(const std::string& name);

    struct Signal {
        std::string path;
        std::string interface;
        std::string member;
    };
    // Broadcast, or for `destination` alone.
    void emit(const Signal& signal, const std::string& argument, const std::string& destination = "");

    // Returns when the bus has passed on what was emitted so far.
    void settle();

    // The bus's own NameOwnerChanged, as only the bus may send it.
    void emitOwnerChange(const std::string& name, const std::string& former, const std::string& present,
                         const std::string& destination);

    // "MEMBER(FIRST ARGUMENT)" of the calls so far.
    std::vector<std::string> calls() const;
    // The unique name of the last caller.
    std::string caller() const;
    bool waitForCall(const std::string& call) const;

    // Signals received, as subscribed to by receive().
    void receive(const Signal& signal);
    std::size_t received() const { return received_; }

  private:
    struct Close {
        void operator()(sd_bus* bus) const noexcept { sd_bus_flush_close_unref(bus); }
    };

    static int onCall(sd_bus_message* message, void* peer, sd_bus_error* error);
    static int onSignal(sd_bus_message* message, void* peer, sd_bus_error* error);
    void send(const Signal& signal, const std::vector<std::string>& arguments,
              const std::string& destination);
    void serve();
    void poke() const;

    mutable std::mutex mutex_;  // for bus_ and calls_
    mutable std::condition_variable called_;
    std::unique_ptr<sd_bus, Close> bus_;
    std::string uniqueName_;
    std::vector<std::string> calls_;
    std::string caller_;
    std::atomic<std::size_t> received_ = 0;
    int wakeUp_ = -1;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

}  // namespace kaz::test
