#pragma once

#include <wifi/types.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kaz::ctl {

// The part of wifi::Manager that the commands use; wifi/manager.h tells what each operation does. It stands
// between so that commands can be tested over a device that a test plays.
class Device {
  public:
    // What a change is about.
    enum class Aspect { power, scanning, networks, connection };
    using Listener = std::function<void(Aspect)>;

    Device() = default;
    virtual ~Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    Device(Device&&) = delete;
    Device& operator=(Device&&) = delete;

    // The listener is called after every change, on a thread of the device's; it may call any operation. Set
    // it once, before anything else.
    virtual void listen(Listener listener) = 0;

    virtual void setEnabled(bool enabled) = 0;
    virtual bool isEnabled() const = 0;
    virtual bool isWifiStackInitialized() const = 0;
    virtual void scan() = 0;
    virtual bool isScanning() const = 0;
    virtual std::vector<wifi::WifiNetwork> networks() = 0;
    virtual std::set<std::string> eapMethods() const = 0;
    virtual std::set<std::string> phase2Methods() const = 0;
    virtual wifi::ConnectResult connect(const wifi::ConnectionSettings& settings) = 0;
    virtual void connectConfigured(const std::string& ssid) = 0;
    virtual void disconnect() = 0;
    virtual void forgetNetwork(const std::string& ssid) = 0;
    virtual wifi::ConnectionInfo connectionInfo() const = 0;
};

using DeviceFactory = std::function<std::unique_ptr<Device>()>;

// The Wi-Fi of this machine. Throws what wifi::Manager's constructor throws.
std::unique_ptr<Device> makeManagerDevice();

}  // namespace kaz::ctl
