#include "unit/kazwifictl/fake_manager.h"

#include <algorithm>
#include <array>
#include <deque>
#include <memory>
#include <thread>
#include <utility>

namespace kaz {
namespace test {

using wifi::ConnectionInfo;
using wifi::SecurityMode;
using wifi::WifiNetwork;

namespace {

FakeWorld* livingWorld = nullptr;

}  // namespace

FakeWorld::FakeWorld() {
    livingWorld = this;
}

FakeWorld::~FakeWorld() {
    livingWorld = nullptr;
}

void FakeWorld::record(const std::string& what) {
    const std::lock_guard lock(mutex);
    done.push_back(what);
    changed.notify_all();
}

bool FakeWorld::did(const std::string& what) {
    const std::lock_guard lock(mutex);
    return std::find(done.begin(), done.end(), what) != done.end();
}

std::vector<std::string> FakeWorld::everything() {
    const std::lock_guard lock(mutex);
    return done;
}

WifiNetwork network(std::string ssid, int signal, SecurityMode mode, bool configured) {
    return {std::move(ssid), signal, mode, configured};
}

ConnectionInfo connectedTo(std::string ssid, int signal) {
    ConnectionInfo info;
    info.status = ConnectionInfo::Status::connected;
    info.ssid = std::move(ssid);
    info.signal = signal;
    return info;
}

}  // namespace test

namespace wifi {

using Status = ConnectionInfo::Status;
using Reason = ConnectionInfo::DisconnectReason;

// Keeps the promises of wifi/manager.h: requests become tasks, which run in order on the Manager's own thread. The
// destructor drops tasks that have not begun.
class ManagerImpl : kaz::NonCopyable {
  public:
    explicit ManagerImpl(test::FakeWorld& world);
    ~ManagerImpl();

    enum class Aspect { power, scanning, networks, connection };
    void listen(Aspect aspect, std::function<void()> callback);
    void setEnabled(bool enabled);
    bool isEnabled() const { return enabled_; }
    bool isWifiStackInitialized() const;
    void scan();
    bool isScanning() const;
    std::vector<WifiNetwork> networks();
    std::set<std::string> eapMethods() const { return world_.eapMethods; }
    ConnectResult connect(const ConnectionSettings& settings);
    void connectConfigured(const std::string& ssid);
    void disconnect();
    void forgetNetwork(const std::string& ssid);
    ConnectionInfo connectionInfo() const;

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
    void setDisconnected(ConnectionInfo::DisconnectReason reason);

    test::FakeWorld& world_;
    mutable std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<Task> tasks_;
    std::array<std::function<void()>, 4> callbacks_;
    bool ending_ = false;
    bool resting_ = false;  // all requests are done
    bool enabled_ = true;
    bool running_ = false;
    bool scanning_ = false;
    bool listStays_ = false;
    std::vector<WifiNetwork> networks_;
    ConnectionInfo published_;
    ConnectionInfo info_;  // only the thread uses this and the next two
    bool saveOwed_ = false;
    bool othersDisabled_ = false;
    std::thread thread_;
};

ManagerImpl::ManagerImpl(test::FakeWorld& world) : world_(world), enabled_(world.storedChoice) {
    tasks_.emplace_back([this] { attach(); });
    tasks_.emplace_back([this] { idle(); });
    thread_ = std::thread([this] { work(); });
}

ManagerImpl::~ManagerImpl() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        tasks_.clear();
        ready_.notify_all();
    }
    thread_.join();
}

void ManagerImpl::work() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        if (tasks_.empty()) {
            lock.unlock();
            idle();
            lock.lock();
            resting_ = tasks_.empty();
            ready_.notify_all();
            ready_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
            continue;
        }
        lock.unlock();
        std::this_thread::sleep_for(world_.slowness);
        lock.lock();
        if (world_.holdsTasks) {
            ready_.wait(lock, [this] { return ending_; });
        }
        if (ending_ || tasks_.empty()) {
            continue;
        }
        const Task task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
    lock.unlock();
    idle();
}

void ManagerImpl::push(Task task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    resting_ = false;
    ready_.notify_all();
}

void ManagerImpl::untilResting() {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [this] { return resting_; });
}

void ManagerImpl::notify(Aspect aspect) {
    std::function<void()> callback;
    {
        const std::lock_guard lock(mutex_);
        callback = callbacks_.at(static_cast<std::size_t>(aspect));
    }
    if (callback) {
        callback();
    }
}

void ManagerImpl::attach() {
    if (world_.followsOnceAsked) {
        std::unique_lock lock(world_.mutex);
        world_.changed.wait(lock, [this] { return world_.asked; });
    }
    {
        const std::scoped_lock lock(mutex_, world_.mutex);
        if (!world_.running) {
            return;
        }
        running_ = true;
        info_ = world_.connection;
    }
    notify(Aspect::power);
}

void ManagerImpl::publishConnection() {
    {
        const std::lock_guard lock(mutex_);
        if (info_ == published_) {
            return;
        }
        if (othersDisabled_ && info_.status != Status::connectingWifi) {
            othersDisabled_ = false;
            saveOwed_ = true;
        }
        published_ = info_;
    }
    notify(Aspect::connection);
}

void ManagerImpl::idle() {
    publishConnection();
    std::vector<WifiNetwork> list;
    {
        const std::scoped_lock lock(mutex_, world_.mutex);
        if (listStays_) {
            list = networks_;
        } else if (running_) {
            list = world_.inRange;
        }
        for (WifiNetwork& each : list) {
            each.configured = world_.saved.contains(each.ssid);
        }
        std::erase_if(list, [&](const WifiNetwork& each) {
            return published_.status != Status::disconnected && each.ssid == published_.ssid;
        });
        std::swap(list, networks_);
        if (list == networks_) {
            list.clear();
        } else {
            list.emplace_back();
        }
    }
    if (!list.empty()) {
        notify(Aspect::networks);
    }
    if (saveOwed_ && !othersDisabled_) {
        saveOwed_ = false;
        world_.record("save");
    }
}

void ManagerImpl::setDisconnected(Reason reason) {
    if (info_.status != Status::disconnected) {
        info_.disconnectSsid = info_.ssid;
        info_.disconnectReason = reason;
        info_.disconnectTime = std::chrono::steady_clock::now();
    }
    info_.status = Status::disconnected;
    info_.ssid.clear();
    info_.signal = wifi::NoSignaldBm;
}

void ManagerImpl::beginAttempt(const std::string& ssid) {
    setDisconnected(Reason::causedByUser);
    info_.status = Status::connectingWifi;
    info_.ssid = ssid;
    publishConnection();
}

void ManagerImpl::play(const std::string& ssid) {
    const auto steps = world_.afterConnect.find(ssid);
    if (steps == world_.afterConnect.end()) {
        return;
    }
    for (const test::FakeWorld::Step& step : steps->second) {
        push([this, step] {
            if (step.status == Status::disconnected) {
                setDisconnected(Reason::causedBySystem);
                return;
            }
            info_.status = step.status;
            info_.ssid = step.ssid;
            info_.signal = step.signal;
            saveOwed_ |= step.status > Status::connectingWifi;
        });
        push([this] { idle(); });
    }
}

void ManagerImpl::listen(Aspect aspect, std::function<void()> callback) {
    const std::lock_guard lock(mutex_);
    callbacks_.at(static_cast<std::size_t>(aspect)) = std::move(callback);
}

void ManagerImpl::setEnabled(bool enabled) {
    enabled_ = enabled;
    if (world_.canStore) {
        world_.storedChoice = enabled;
    }
    push([this, enabled] {
        world_.record(enabled ? "start" : "stop");
        if (!world_.startsAndStops) {
            return;
        }
        {
            const std::scoped_lock lock(mutex_, world_.mutex);
            world_.running = enabled;
            running_ = enabled;
            info_ = {};
        }
        notify(Aspect::power);
    });
}

bool ManagerImpl::isWifiStackInitialized() const {
    const std::lock_guard lock(mutex_);
    return running_;
}

void ManagerImpl::scan() {
    push([this] {
        world_.record("scan");
        if (!world_.scansBegin) {
            return;
        }
        {
            const std::lock_guard lock(mutex_);
            scanning_ = true;
        }
        notify(Aspect::scanning);
        if (world_.scansEnd) {
            push([this] {
                {
                    const std::scoped_lock lock(mutex_, world_.mutex);
                    scanning_ = false;
                    listStays_ = world_.resultsReachNobody;
                    world_.inRange.insert(world_.inRange.end(), world_.foundByScan.begin(),
                                          world_.foundByScan.end());
                }
                notify(Aspect::scanning);
            });
        }
    });
}

bool ManagerImpl::isScanning() const {
    const std::lock_guard lock(mutex_);
    return scanning_;
}

std::vector<WifiNetwork> ManagerImpl::networks() {
    const std::lock_guard lock(mutex_);
    return networks_;
}

ConnectResult ManagerImpl::connect(const ConnectionSettings& settings) {
    const bool psk =
        settings.securityMode == SecurityMode::wpaPsk || settings.securityMode == SecurityMode::rsnPsk;
    if (psk && settings.password.size() < 8) {
        return ConnectResult::passwordTooShort;
    }
    if (!settings.eapMethod.empty() && !world_.eapMethods.contains(settings.eapMethod)) {
        return ConnectResult::eapMethodUnsupported;
    }
    if (settings.securityMode == SecurityMode::unsupported) {
        return ConnectResult::securityModeUnsupported;
    }
    push([this, settings] {
        beginAttempt(settings.ssid);
        {
            const std::lock_guard lock(world_.mutex);
            world_.saved.insert(settings.ssid);
            world_.password = settings.password;
        }
        othersDisabled_ = true;
        world_.record("connect " + settings.ssid);
        play(settings.ssid);
    });
    if (world_.connectsAtOnce) {
        untilResting();
    }
    return ConnectResult::ok;
}

void ManagerImpl::connectConfigured(const std::string& ssid) {
    {
        const std::lock_guard lock(world_.mutex);
        world_.asked = true;
        world_.changed.notify_all();
    }
    push([this, ssid] {
        beginAttempt(ssid);
        const std::scoped_lock lock(world_.mutex);
        if (world_.saved.contains(ssid)) {
            othersDisabled_ = true;
            world_.done.push_back("select " + ssid);
        }
    });
    push([this, ssid] { play(ssid); });
}

void ManagerImpl::disconnect() {
    push([this] {
        setDisconnected(Reason::causedByUser);
        publishConnection();
        const std::scoped_lock lock(world_.mutex);
        world_.connection = {};
        world_.done.emplace_back("disconnect");
    });
}

void ManagerImpl::forgetNetwork(const std::string& ssid) {
    push([this, ssid] {
        if (info_.status != Status::disconnected && info_.ssid == ssid) {
            setDisconnected(Reason::causedByUser);
        }
        publishConnection();
        const std::scoped_lock lock(world_.mutex);
        world_.done.push_back("forget " + ssid);
        if (!world_.removalFails) {
            world_.saved.erase(ssid);
        }
        saveOwed_ = true;
    });
}

ConnectionInfo ManagerImpl::connectionInfo() const {
    const std::lock_guard lock(mutex_);
    return published_;
}

Manager::Manager() : impl_(std::make_unique<ManagerImpl>(*test::livingWorld)) {
    if (test::livingWorld->whenMade) {
        test::livingWorld->whenMade(*this);
    }
}

Manager::~Manager() = default;

void Manager::setEnabled(bool enabled) {
    impl_->setEnabled(enabled);
}

bool Manager::isEnabled() const {
    return impl_->isEnabled();
}

bool Manager::isWifiStackInitialized() const {
    return impl_->isWifiStackInitialized();
}

void Manager::onEnabledChanged(std::function<void()> callback) {
    impl_->listen(ManagerImpl::Aspect::power, std::move(callback));
}

void Manager::scan() {
    impl_->scan();
}

bool Manager::isScanning() const {
    return impl_->isScanning();
}

void Manager::onScanningChanged(std::function<void()> callback) {
    impl_->listen(ManagerImpl::Aspect::scanning, std::move(callback));
}

std::vector<WifiNetwork> Manager::networks() {
    return impl_->networks();
}

void Manager::onNetworksListChanged(std::function<void()> callback) {
    impl_->listen(ManagerImpl::Aspect::networks, std::move(callback));
}

std::set<std::string> Manager::eapMethods() const {
    return impl_->eapMethods();
}

std::set<std::string> Manager::phase2Methods() const {
    return {"GTC", "MSCHAP", "MSCHAPV2", "PAP"};
}

ConnectResult Manager::connect(const ConnectionSettings& settings) {
    return impl_->connect(settings);
}

void Manager::connectConfigured(const std::string& ssid) {
    impl_->connectConfigured(ssid);
}

void Manager::disconnect() {
    impl_->disconnect();
}

void Manager::forgetNetwork(const std::string& ssid) {
    impl_->forgetNetwork(ssid);
}

ConnectionInfo Manager::connectionInfo() const {
    return impl_->connectionInfo();
}

void Manager::onConnectionInfoChanged(std::function<void()> callback) {
    impl_->listen(ManagerImpl::Aspect::connection, std::move(callback));
}

}  // namespace wifi
}  // namespace kaz
