#pragma once

#include "base/non_copyable.h"
#include "manager/eap_methods.h"

#include <wifi/connection_details.h>
#include <wifi/network_access.h>
#include <wifi/types.h>

#include <array>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kaz::wifi {

using NetworkAccessBySsid = std::map<std::string, NetworkAccess>;

// What other threads may see of the engine: copies of its state, and the callbacks that announce a change. Thread-safe.
//
// The mutex is held to copy or to swap, never while a callback runs. Callbacks are copied and replaced under the
// mutex, so copying or destroying what a callback captured must not call the engine.
class Published : NonCopyable {
  public:
    enum class Change { enabled, networks, scanning, connectionInfo, connectionDetails };

    std::vector<WifiNetwork> networks() const { return copyOf(networks_); }
    NetworkAccessBySsid networkAccess() const { return copyOf(networkAccess_); }
    ConnectionInfo connectionInfo() const { return copyOf(details_.info); }
    ConnectionDetails connectionDetails() const { return copyOf(details_); }
    AcceptedMethods eapMethods() const { return copyOf(eapMethods_); }

    // Replaces the copy, then invokes the callback that was registered at that moment. EAP methods and the access to
    // networks have no callback.
    void publish(std::vector<WifiNetwork> networks);
    void publish(NetworkAccessBySsid access);
    // The record with what explains it. Invokes the callback of the connection info if that changed, then that of the
    // details.
    void publish(ConnectionDetails details);
    void publish(AcceptedMethods eapMethods);

    // Replaces the callback. An empty function removes it.
    void onChange(Change change, std::function<void()> callback);

    // Invokes the callback on the calling thread. An exception that it throws is logged.
    void notify(Change change);

  private:
    using Callback = std::function<void()>;

    template <typename T>
    T copyOf(const T& member) const {
        const std::lock_guard lock(mutex_);
        return member;
    }
    bool hasChanged(const ConnectionInfo& info) const;
    // Swaps the value in and copies the callback under one lock. The former value is destroyed after unlocking.
    template <typename T>
    Callback replace(T& member, T next, Change change);
    template <typename CopyCallback>
    static void invoke(const CopyCallback& copyCallback);
    Callback& callbackFor(Change change);

    mutable std::mutex mutex_;
    std::vector<WifiNetwork> networks_;
    NetworkAccessBySsid networkAccess_;
    ConnectionDetails details_;
    AcceptedMethods eapMethods_;
    std::array<Callback, 5> callbacks_;
};

}  // namespace kaz::wifi
