#include "dbus/bus.h"

#include <utility>

namespace kaz::dbus {
namespace {

// A device's own event loop may lack these two. The library is built with it all the same; it then notices neither that
// the bus comes back nor that a daemon is replaced.
template <typename Loop, typename Task>
void setConnectionTask(Loop& loop, Task task) {
    if constexpr (requires { loop.setConnectionTaskSync(task); }) {
        loop.setConnectionTaskSync(std::move(task));
    }
}

template <typename Loop, typename Task>
void setOwnerTask(Loop& loop, const char* name, Task task) {
    if constexpr (requires { loop.setNameOwnerTaskSync(name, task); }) {
        loop.setNameOwnerTaskSync(name, std::move(task));
    }
}

}  // namespace

void Bus::start() {
    loop_.startEventLoopAsync();
}

void Bus::stop() {
    loop_.stopEventLoopAsync();
}

void Bus::pushTask(std::function<void()> task) {
    loop_.pushTaskAsync(std::move(task));
}

void Bus::setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) {
    loop_.setIdleTaskSync(std::move(task));
}

void Bus::configureTimer(bool enable, std::chrono::milliseconds interval) {
    loop_.configureTimerSync(enable, interval);
}

void Bus::setTimerTask(std::function<void()> task) {
    loop_.setTimerCompletedTask(std::move(task));
}

void Bus::subscribe(const char* sender, const OPath& path, const char* interface, const char* member,
                    Lifetime lifetime, std::function<void(MessageDecoder&)> handler) {
    loop_.registerSignalHandlerSync(sender, path.c_str(), interface, member, lifetime == Lifetime::temporary,
                                    std::move(handler));
}

void Bus::dropTemporarySubscriptions() {
    loop_.removeTemporarySignalHandlersSync();
}

void Bus::onConnectionChanged(std::function<void(bool connected)> task) {
    setConnectionTask(loop_, std::move(task));
}

void Bus::onOwnerChanged(const char* name, std::function<void(bool owned)> task) {
    setOwnerTask(loop_, name, std::move(task));
}

RemoteObject Bus::object(const char* destination, const OPath& path, const char* interface) const {
    return {loop_.getSdBusHandle(), {destination, path.str(), interface}};
}

}  // namespace kaz::dbus
