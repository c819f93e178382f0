#include "manager/published.h"

#include "base/log.h"

#include <cstddef>
#include <exception>
#include <utility>

namespace kaz::wifi {

template <typename T>
void Published::replace(T& member, T next) {
    const std::lock_guard lock(mutex_);
    std::swap(member, next);
}

void Published::publish(std::vector<WifiNetwork> networks) {
    replace(networks_, std::move(networks));
    notify(Change::networks);
}

void Published::publish(ConnectionInfo info) {
    replace(connectionInfo_, std::move(info));
    notify(Change::connectionInfo);
}

void Published::publish(std::set<std::string> eapMethods) {
    replace(eapMethods_, std::move(eapMethods));
}

void Published::onChange(Change change, std::function<void()> callback) {
    const std::lock_guard lock(mutex_);
    callbackFor(change) = std::move(callback);
}

// Copying a callback may throw, too.
void Published::notify(Change change) {
    try {
        if (const Callback callback = copyOf(callbackFor(change))) {
            callback();
        }
    } catch (const std::exception& error) {
        log::error("A callback threw an exception: {}", error.what());
    } catch (...) {
        log::error("A callback threw an exception of unknown type");
    }
}

Published::Callback& Published::callbackFor(Change change) {
    return callbacks_.at(static_cast<std::size_t>(change));
}

}  // namespace kaz::wifi
