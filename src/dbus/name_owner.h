#pragma once

#include "base/non_copyable.h"
#include "base/replaceable_task.h"
#include "base/sd_bus/handles.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace kaz::dbus {

// Tracks which connection owns a bus name. Any program on the bus can forge a signal of a service, and
// neither the bus nor sd-bus checks the sender. Subscribes to changes of this name only. For the loop thread.
class NameOwner : NonCopyable {
  public:
    using ChangeTask = std::function<void(bool owned)>;
    using Clock = std::chrono::steady_clock;

    // While the owner is unknown, sent() asks the bus for it at most once per pause.
    explicit NameOwner(std::string name, Clock::duration pause = std::chrono::seconds(5));
    ~NameOwner() = default;

    // Tracks the name on this connection. This takes two calls, or none if it is already attached. A failure
    // is logged; then the owner is unknown until it changes or the next attach().
    void attach(sd_bus* bus);
    void detach() noexcept;

    // Runs when the name gets another owner or loses its owner while this is attached.
    void setChangeTask(ChangeTask task);

    // Whether the current owner sent the message. False while there is no owner. If the last attach() failed, this
    // first attaches to the message's connection, at most once per pause. If that fails too, the message is missed.
    bool sent(sd_bus_message* message);

    // For the time after a message was missed: attaches, at most once per pause. Returns the time until the next
    // attempt, or nullopt if none is needed.
    std::optional<Clock::duration> recover(sd_bus* bus);

    // Returns once whether messages were missed before the owner became known.
    bool takeMissed();

    // The unique name of the owner; empty while there is none or it is unknown.
    const std::string& owner() const noexcept { return owner_; }

    // Whether the last attach() failed.
    bool unknown() const noexcept { return !known_; }

  private:
    static int onChanged(sd_bus_message* message, void* owner, sd_bus_error* error);
    void attachAgain(sd_bus* bus);
    int subscribe(sd_bus* bus);
    int ask(sd_bus* bus);
    void change(const char* present);

    std::string name_;
    const Clock::duration pause_;
    Clock::time_point askAgainAt_;
    std::string owner_;   // unique name, empty while there is none
    bool known_ = false;  // the bus has reported owner_
    bool missed_ = false;
    ReplaceableTask<void(bool owned)> changeTask_;
    SlotPtr slot_;
};

}  // namespace kaz::dbus
