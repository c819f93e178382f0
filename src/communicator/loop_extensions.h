// What the event loop of this tree can do and that of a device's own platform library may lack. The library is built
// with either; without these it follows neither a bus that comes back nor a systemd that is replaced.
#pragma once

#include <utility>

namespace kaz::wifi {

// Runs `task(bool connected)` when the bus is lost, and when there is one again.
template <typename Loop, typename Task>
void followConnection(Loop& loop, Task task) {
    if constexpr (requires { loop.setConnectionTaskSync(task); }) {
        loop.setConnectionTaskSync(std::move(task));
    }
}

// Runs `task(bool owned)` when the owner of a bus name changes.
template <typename Loop, typename Task>
void followNameOwner(Loop& loop, const char* name, Task task) {
    if constexpr (requires { loop.setNameOwnerTaskSync(name, task); }) {
        loop.setNameOwnerTaskSync(name, std::move(task));
    }
}

}  // namespace kaz::wifi
