#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/non_copyable.h"
#include "kazwifictl/session/device.h"

namespace kaz::test {

// What outlives a device: the machine it controls. A test sets it up, and looks at it afterwards.
struct FakeWorld {
    using Info = wifi::ConnectionInfo;
    // What the device does by itself after it has taken up an attempt, one step after the other.
    struct Step {
        Info::Status status = Info::Status::disconnected;
        std::string ssid;
        int signal = wifi::NoSignaldBm;
    };

    std::mutex mutex;
    std::condition_variable changed;
    bool running = true;
    bool storedChoice = true;
    bool canStore = true;
    bool startsAndStops = true;             // whether the supplicant follows the choice
    std::chrono::milliseconds slowness{0};  // how long before each task begins
    std::atomic<bool> holdsTasks = false;   // whether none begins any more
    bool followsOnceAsked = false;    // whether devices find the supplicant only after a request to connect
    bool connectsAtOnce = false;      // whether connect() returns after all that comes of it
    bool resultsReachNobody = false;  // whether a device that scanned keeps the list it had
    std::vector<wifi::WifiNetwork> inRange;
    std::vector<wifi::WifiNetwork> foundByScan;  // also in range after a scan
    std::set<std::string> saved;
    Info connection;
    std::map<std::string, std::vector<Step>> afterConnect;
    std::set<std::string> eapMethods{"PEAP", "TTLS"};
    bool scansEnd = true;
    bool scansBegin = true;
    bool removalFails = false;

    bool asked = false;  // whether there has been a request to connect

    // What has been done, in order: "connect Home", "save".
    std::vector<std::string> done;
    std::string password;  // of the last connect

    void record(const std::string& what);
    bool did(const std::string& what);
    std::vector<std::string> everything();
};

// A device with a thread of its own that keeps the promises of wifi/manager.h: requests become tasks that run
// in order, and the end of the device drops those that have not begun.
class FakeDevice final : public ctl::Device, NonCopyable {
  public:
    explicit FakeDevice(FakeWorld& world);
    ~FakeDevice() override;

    void listen(Listener listener) override;
    void setEnabled(bool enabled) override;
    bool isEnabled() const override;
    bool isWifiStackInitialized() const override;
    void scan() override;
    bool isScanning() const override;
    std::vector<wifi::WifiNetwork> networks() override;
    std::set<std::string> eapMethods() const override;
    std::set<std::string> phase2Methods() const override;
    wifi::ConnectResult connect(const wifi::ConnectionSettings& settings) override;
    void connectConfigured(const std::string& ssid) override;
    void disconnect() override;
    void forgetNetwork(const std::string& ssid) override;
    wifi::ConnectionInfo connectionInfo() const override;

  private:
    using Task = std::function<void()>;

    void push(Task task);
    void untilResting();
    void work();
    void idle();
    void attach();
    void notify(Aspect aspect);
    void publishConnection();
    void beginAttempt(const std::string& ssid);
    void play(const std::string& ssid);
    void setDisconnected(wifi::ConnectionInfo::DisconnectReason reason);

    FakeWorld& world_;
    mutable std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<Task> tasks_;
    Listener listener_;
    bool ending_ = false;
    bool resting_ = false;  // all that was asked for is done
    bool enabled_ = true;
    bool running_ = false;
    bool scanning_ = false;
    bool listStays_ = false;
    std::vector<wifi::WifiNetwork> networks_;
    wifi::ConnectionInfo published_;
    wifi::ConnectionInfo info_;  // on the thread only, like the rest
    bool saveOwed_ = false;
    bool othersDisabled_ = false;
    std::thread thread_;
};

ctl::DeviceFactory makeFake(FakeWorld& world);

wifi::WifiNetwork network(std::string ssid, int signal, wifi::SecurityMode mode, bool configured = false);
wifi::ConnectionInfo connectedTo(std::string ssid, int signal);

}  // namespace kaz::test
