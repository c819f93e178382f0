#pragma once

#include "base/non_copyable.h"
#include "base/replaceable_task.h"
#include "base/sd_bus/handles.h"

#include <functional>
#include <string>

namespace kaz::dbus {

// Follows which connection owns a bus name. Any program on the bus can send us a signal under the path of a service;
// neither the bus nor sd-bus checks who sent it. The bus reports changes of this one name only. Loop thread.
class NameOwner : NonCopyable {
  public:
    using ChangeTask = std::function<void(bool owned)>;

    explicit NameOwner(std::string name);
    ~NameOwner() = default;

    // Follows the name on this connection: two calls, unless it is followed there already. After a failure, which is
    // logged, the owner is unknown until it changes or the next attach().
    void attach(sd_bus* bus);
    void detach() noexcept;

    // Runs when the name gets another owner or loses its owner while this is attached.
    void setChangeTask(ChangeTask task);

    // Whether the present owner sent the message. False while there is none.
    bool sent(sd_bus_message* message) const noexcept;

  private:
    static int onChanged(sd_bus_message* message, void* owner, sd_bus_error* error);
    int subscribe(sd_bus* bus);
    int ask(sd_bus* bus);

    std::string name_;
    std::string owner_;   // unique name, empty while there is none
    bool known_ = false;  // owner_ is what the bus said
    ReplaceableTask<void(bool owned)> changeTask_;
    SlotPtr slot_;
};

}  // namespace kaz::dbus
