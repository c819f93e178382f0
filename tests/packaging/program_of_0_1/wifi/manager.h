// The declarations of 0.1.0, without their comments. Never changed.
#pragma once

#include <wifi/types.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

class ManagerImpl;

class [[gnu::visibility("default")]] Manager {
  public:
    Manager();
    ~Manager();
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    Manager(Manager &&) = delete;
    Manager& operator=(Manager&&) = delete;
    void setEnabled(bool enabled);
    bool isEnabled() const;
    bool isWifiStackInitialized() const;
    void onEnabledChanged(std::function<void()> callback);
    void scan();
    bool isScanning() const;
    void onScanningChanged(std::function<void()> callback);
    std::vector<WifiNetwork> networks();
    void onNetworksListChanged(std::function<void()> callback);
    std::set<std::string> eapMethods() const;
    std::set<std::string> phase2Methods() const;
    ConnectResult connect(const ConnectionSettings& settings);
    void connectConfigured(const std::string& ssid);
    void disconnect();
    void forgetNetwork(const std::string& ssid);
    ConnectionInfo connectionInfo() const;
    void onConnectionInfoChanged(std::function<void()> callback);

  private:
    std::unique_ptr<ManagerImpl> impl_;
};

}  // namespace kaz::wifi
