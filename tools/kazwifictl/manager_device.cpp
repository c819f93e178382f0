#include <wifi/manager.h>

#include <utility>

#include "kazwifictl/session/device.h"

namespace kaz::ctl {
namespace {

class ManagerDevice final : public Device {
  public:
    void listen(Listener listener) override {
        listener_ = std::move(listener);
        manager_.onEnabledChanged([this] { listener_(Aspect::power); });
        manager_.onScanningChanged([this] { listener_(Aspect::scanning); });
        manager_.onNetworksListChanged([this] { listener_(Aspect::networks); });
        manager_.onConnectionInfoChanged([this] { listener_(Aspect::connection); });
    }

    void setEnabled(bool enabled) override { manager_.setEnabled(enabled); }
    bool isEnabled() const override { return manager_.isEnabled(); }
    bool isWifiStackInitialized() const override { return manager_.isWifiStackInitialized(); }
    void scan() override { manager_.scan(); }
    bool isScanning() const override { return manager_.isScanning(); }
    std::vector<wifi::WifiNetwork> networks() override { return manager_.networks(); }
    std::set<std::string> eapMethods() const override { return manager_.eapMethods(); }
    std::set<std::string> phase2Methods() const override { return manager_.phase2Methods(); }
    wifi::ConnectResult connect(const wifi::ConnectionSettings& settings) override {
        return manager_.connect(settings);
    }
    void connectConfigured(const std::string& ssid) override { manager_.connectConfigured(ssid); }
    void disconnect() override { manager_.disconnect(); }
    void forgetNetwork(const std::string& ssid) override { manager_.forgetNetwork(ssid); }
    wifi::ConnectionInfo connectionInfo() const override { return manager_.connectionInfo(); }

  private:
    Listener listener_;
    wifi::Manager manager_;  // ends first, and with it the thread that calls the listener
};

}  // namespace

std::unique_ptr<Device> makeManagerDevice() {
    return std::make_unique<ManagerDevice>();
}

}  // namespace kaz::ctl
