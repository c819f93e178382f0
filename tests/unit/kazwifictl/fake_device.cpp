#include "unit/kazwifictl/fake_device.h"

#include <algorithm>
#include <utility>

namespace kaz::test {

using wifi::ConnectionInfo;
using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::SecurityMode;
using wifi::WifiNetwork;
using Status = ConnectionInfo::Status;
using Reason = ConnectionInfo::DisconnectReason;

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

FakeDevice::FakeDevice(FakeWorld& world) : world_(world), enabled_(world.storedChoice) {
    tasks_.emplace_back([this] { attach(); });
    tasks_.emplace_back([this] { idle(); });
    thread_ = std::thread([this] { work(); });
}

FakeDevice::~FakeDevice() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        tasks_.clear();
        ready_.notify_all();
    }
    thread_.join();
}

void FakeDevice::work() {
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

void FakeDevice::push(Task task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    resting_ = false;
    ready_.notify_all();
}

void FakeDevice::untilResting() {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [this] { return resting_; });
}

void FakeDevice::notify(Aspect aspect) {
    Listener listener;
    {
        const std::lock_guard lock(mutex_);
        listener = listener_;
    }
    if (listener) {
        listener(aspect);
    }
}

void FakeDevice::attach() {
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

void FakeDevice::publishConnection() {
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

void FakeDevice::idle() {
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

void FakeDevice::setDisconnected(Reason reason) {
    if (info_.status != Status::disconnected) {
        info_.disconnectSsid = info_.ssid;
        info_.disconnectReason = reason;
        info_.disconnectTime = std::chrono::steady_clock::now();
    }
    info_.status = Status::disconnected;
    info_.ssid.clear();
    info_.signal = wifi::NoSignaldBm;
}

void FakeDevice::beginAttempt(const std::string& ssid) {
    setDisconnected(Reason::causedByUser);
    info_.status = Status::connectingWifi;
    info_.ssid = ssid;
    publishConnection();
}

void FakeDevice::play(const std::string& ssid) {
    const auto steps = world_.afterConnect.find(ssid);
    if (steps == world_.afterConnect.end()) {
        return;
    }
    for (const FakeWorld::Step& step : steps->second) {
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

void FakeDevice::listen(Listener listener) {
    const std::lock_guard lock(mutex_);
    listener_ = std::move(listener);
}

void FakeDevice::setEnabled(bool enabled) {
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

bool FakeDevice::isEnabled() const {
    return enabled_;
}

bool FakeDevice::isWifiStackInitialized() const {
    const std::lock_guard lock(mutex_);
    return running_;
}

void FakeDevice::scan() {
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

bool FakeDevice::isScanning() const {
    const std::lock_guard lock(mutex_);
    return scanning_;
}

std::vector<WifiNetwork> FakeDevice::networks() {
    const std::lock_guard lock(mutex_);
    return networks_;
}

std::set<std::string> FakeDevice::eapMethods() const {
    return world_.eapMethods;
}

std::set<std::string> FakeDevice::phase2Methods() const {
    return {"GTC", "MSCHAP", "MSCHAPV2", "PAP"};
}

ConnectResult FakeDevice::connect(const ConnectionSettings& settings) {
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

void FakeDevice::connectConfigured(const std::string& ssid) {
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

void FakeDevice::disconnect() {
    push([this] {
        setDisconnected(Reason::causedByUser);
        publishConnection();
        const std::scoped_lock lock(world_.mutex);
        world_.connection = {};
        world_.done.emplace_back("disconnect");
    });
}

void FakeDevice::forgetNetwork(const std::string& ssid) {
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

ConnectionInfo FakeDevice::connectionInfo() const {
    const std::lock_guard lock(mutex_);
    return published_;
}

ctl::DeviceFactory makeFake(FakeWorld& world) {
    return [&world] { return std::make_unique<FakeDevice>(world); };
}

WifiNetwork network(std::string ssid, int signal, SecurityMode mode, bool configured) {
    return {std::move(ssid), signal, mode, configured};
}

ConnectionInfo connectedTo(std::string ssid, int signal) {
    ConnectionInfo info;
    info.status = Status::connected;
    info.ssid = std::move(ssid);
    info.signal = signal;
    return info;
}

}  // namespace kaz::test
