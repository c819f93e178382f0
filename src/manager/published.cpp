#include "manager/published.h"

#include "manager/guarded_callback.h"

#include <cstddef>
#include <utility>

namespace kaz::wifi {

template <typename T>
Published::Callback Published::replace(T& member, T next, Change change) {
    const std::lock_guard lock(mutex_);
    std::swap(member, next);
    return callbackFor(change);
}

void Published::publish(std::vector<WifiNetwork> networks) {
    invoke([&] { return replace(networks_, std::move(networks), Change::networks); });
}

void Published::publish(NetworkAccessBySsid access) {
    const std::lock_guard lock(mutex_);
    std::swap(networkAccess_, access);
}

bool Published::hasChanged(const ConnectionInfo& info) const {
    const std::lock_guard lock(mutex_);
    return details_.info != info;
}

void Published::publish(ConnectionDetails details) {
    if (hasChanged(details.info)) {
        invoke([&] { return replace(details_, std::move(details), Change::connectionInfo); });
        notify(Change::connectionDetails);
    } else {
        invoke([&] { return replace(details_, std::move(details), Change::connectionDetails); });
    }
}

void Published::publish(AcceptedMethods eapMethods) {
    const std::lock_guard lock(mutex_);
    std::swap(eapMethods_, eapMethods);
}

void Published::onChange(Change change, std::function<void()> callback) {
    const std::lock_guard lock(mutex_);
    callbackFor(change) = std::move(callback);
}

void Published::notify(Change change) {
    invoke([&] { return copyOf(callbackFor(change)); });
}

// Copying a callback may throw, too.
template <typename CopyCallback>
void Published::invoke(const CopyCallback& copyCallback) {
    callGuarded([&copyCallback] {
        if (const Callback callback = copyCallback()) {
            callback();
        }
    });
}

Published::Callback& Published::callbackFor(Change change) {
    return callbacks_.at(static_cast<std::size_t>(change));
}

}  // namespace kaz::wifi
