#pragma once

#include <functional>
#include <string>

#include "base/non_copyable.h"
#include "base/replaceable_task.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {

// Who owns a bus name at the moment, followed for as long as this object lives and is attached. Bus and
// client library alone do not keep a process from sending us a signal under the path of a service it is not.
class NameOwner : NonCopyable {
  public:
    explicit NameOwner(std::string name);
    ~NameOwner() = default;

    // Starts to follow on this connection; asks for the present owner and waits for the answer. A failure is
    // logged, and the owner stays unknown until it changes.
    void attach(sd_bus* bus);
    void detach() noexcept;

    // Runs when the name has got another owner, or lost its last, while this object is attached.
    using ChangeTask = std::function<void(bool owned)>;
    void setChangeTask(ChangeTask task);

    const std::string& name() const noexcept { return name_; }

    // False also while the name has no owner.
    bool sent(sd_bus_message* message) const noexcept;

  private:
    static int onChanged(sd_bus_message* message, void* owner, sd_bus_error* error);
    int subscribe(sd_bus* bus);
    int ask(sd_bus* bus);

    std::string name_;
    std::string owner_;  // unique name, empty while there is none
    ReplaceableTask<void(bool owned)> changeTask_;
    SlotPtr slot_;
};

}  // namespace kaz::dbus
