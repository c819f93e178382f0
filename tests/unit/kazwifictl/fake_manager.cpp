// A fake wifi::Manager in a FakeWorld. It keeps the promises of wifi/manager.h: requests become tasks, which run in
// order on the Manager's own thread. The destructor drops tasks that have not begun.
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "unit/kazwifictl/fake_world.h"

namespace kaz::wifi {

using Status = ConnectionInfo::Status;
using Reason = ConnectionInfo::DisconnectReason;

// The Manager's thread, and what it publishes. The Manager's operations push the tasks.
class ManagerImpl : NonCopyable {
  public:
    using Task = std::function<void()>;
    using Callback = std::function<void()>;
    using Asker = std::function<void(const RequestFailures&)>;

    ManagerImpl() {
        tasks = {[this] { attach(); }, [this] { idle(); }};
        thread = std::thread([this] {
            while (const auto task = next()) {
                (*task)();
            }
            idle();
        });
    }

    ~ManagerImpl() {
        {
            const std::lock_guard lock(mutex);
            ending = true;
            ready.notify_all();
        }
        thread.join();
    }

    void push(Task task) {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
        resting = false;
        ready.notify_all();
    }

    void untilResting() {
        std::unique_lock lock(mutex);
        ready.wait(lock, [this] { return resting; });
    }

    // For any thread.
    template <typename Value>
    Value read(Value ManagerImpl::*member) {
        const std::lock_guard lock(mutex);
        return this->*member;
    }
    void listen(Callback ManagerImpl::*callback, Callback function) {
        const std::lock_guard lock(mutex);
        this->*callback = std::move(function);
    }

    // Only for tasks.
    template <typename Change>
    void publish(Callback ManagerImpl::*callback, const Change& change) {
        {
            const std::scoped_lock lock(mutex, world.mutex);
            change();
        }
        notify(callback);
    }

    void notify(Callback ManagerImpl::*callback) {
        if (const Callback function = read(callback)) {
            function();
        }
    }

    void publishConnection() {
        if (info == published.info) {
            return;
        }
        if (othersDisabled && info.status != Status::connectingWifi) {
            othersDisabled = false;
            saveOwed = true;
        }
        publish(&ManagerImpl::onConnection, [this] {
            published.info = info;
            published.lastOutcome = outcome;
        });
    }

    void idle() {
        publishConnection();
        bool changed = false;
        {
            const std::scoped_lock lock(mutex, world.mutex);
            std::vector<WifiNetwork> list = listStays ? networks : world.inRange;
            for (WifiNetwork& each : list) {
                each.configured = world.saved.contains(each.ssid);
            }
            std::erase_if(list, [this](const WifiNetwork& each) {
                return !running ||
                       (published.info.status != Status::disconnected && each.ssid == published.info.ssid);
            });
            changed = list != networks;
            networks = list;
        }
        if (changed) {
            notify(&ManagerImpl::onNetworks);
        }
        if (saveOwed && !othersDisabled) {
            saveOwed = false;
            std::this_thread::sleep_for(world.slowness);
            if (world.canSave) {
                world.record("save");
            } else {
                failures[RequestFailure::notSaved] = FailureReason::refused;
            }
        }
        for (const auto& asker : std::exchange(due, {})) {
            const auto told = std::exchange(failures, {});
            if (!read(&ManagerImpl::ending)) {
                asker(told);
            }
        }
    }

    void attach() {
        {
            std::unique_lock lock(world.mutex);
            world.changed.wait(lock, [this] { return world.asked || !world.followsOnceAsked; });
            if (!world.running) {
                return;
            }
        }
        publish(&ManagerImpl::onPower, [this] {
            running = true;
            info = world.connection;
        });
        if (world.whenAttached) {
            world.whenAttached();
        }
    }

    void beginAttempt(const std::string& ssid) {
        setDisconnected(Reason::causedByUser);
        info.status = Status::connectingWifi;
        info.ssid = ssid;
        publishConnection();
    }

    void play(const std::string& ssid) {
        const auto steps = world.afterConnect.find(ssid);
        if (steps == world.afterConnect.end()) {
            return;
        }
        for (const auto& step : steps->second) {
            push([this, step] { reach(step); });
            push([this] { idle(); });
        }
    }

    void reach(const test::FakeWorld::Step& step) {
        if (step.status == Status::disconnected) {
            outcome = step.why;
            setDisconnected(Reason::causedBySystem);
            return;
        }
        info.status = step.status;
        info.ssid = step.ssid;
        info.signal = step.signal;
        saveOwed |= step.status > Status::connectingWifi;
    }

    void setDisconnected(Reason reason) {
        if (info.status != Status::disconnected) {
            info.disconnectSsid = info.ssid;
            info.disconnectReason = reason;
            info.disconnectTime = std::chrono::steady_clock::now();
        }
        info.status = Status::disconnected;
        info.ssid.clear();
        info.signal = NoSignaldBm;
    }

    // Waits for a task; nothing at the end. Makes an idle pass when no task waits.
    std::optional<ManagerImpl::Task> next() {
        std::unique_lock lock(mutex);
        while (!ending && tasks.empty()) {
            lock.unlock();
            idle();
            lock.lock();
            resting = tasks.empty();
            ready.notify_all();
            ready.wait(lock, [this] { return ending || !tasks.empty(); });
        }
        lock.unlock();
        std::this_thread::sleep_for(world.slowness);
        lock.lock();
        ready.wait(lock, [this] { return ending || !world.holdsTasks; });
        if (ending) {
            return std::nullopt;
        }
        Task task = std::move(tasks.front());
        tasks.pop_front();
        return task;
    }

    test::FakeWorld& world = test::FakeWorld::current();
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<Task> tasks;
    Callback onPower;
    Callback onScanning;
    Callback onNetworks;
    Callback onConnection;
    bool ending = false;
    bool resting = false;  // all requests are done
    bool enabled = world.storedChoice;
    bool running = false;
    bool scanning = false;
    bool listStays = false;
    std::vector<WifiNetwork> networks;
    ConnectionDetails published;
    ConnectionInfo info;  // only tasks use this and the next three
    Outcome outcome;
    bool saveOwed = false;
    bool othersDisabled = false;
    std::vector<Asker> due;
    RequestFailures failures;
    std::thread thread;
};

Manager::Manager() : impl_(std::make_unique<ManagerImpl>()) {
    if (impl_->world.whenMade) {
        impl_->world.whenMade(*this);
    }
}

Manager::~Manager() = default;

void Manager::setEnabled(bool enabled) {
    {
        const std::scoped_lock lock(impl_->mutex, impl_->world.mutex);
        impl_->enabled = enabled;
        impl_->world.storedChoice = impl_->world.canStore ? enabled : impl_->world.storedChoice;
    }
    impl_->push([impl = impl_.get(), enabled] {
        if (!impl->world.canStore) {
            impl->failures[RequestFailure::choiceNotWritten] = FailureReason::none;
        }
        impl->world.record(enabled ? "start" : "stop");
        if (impl->world.startsAndStops) {
            impl->publish(&ManagerImpl::onPower, [impl, enabled] {
                impl->world.running = impl->running = enabled;
                impl->info = {};
            });
        }
    });
}

bool Manager::isEnabled() const {
    return impl_->read(&ManagerImpl::enabled);
}

bool Manager::isWifiStackInitialized() const {
    return impl_->read(&ManagerImpl::running);
}

void Manager::onEnabledChanged(std::function<void()> callback) {
    if (impl_->world.whenHeard) {
        impl_->world.whenHeard(*this);
    }
    impl_->listen(&ManagerImpl::onPower, std::move(callback));
}

void Manager::scan() {
    impl_->push([impl = impl_.get()] {
        test::FakeWorld& world = impl->world;
        world.record("scan");
        if (!world.scansBegin) {
            return;
        }
        impl->publish(&ManagerImpl::onScanning, [impl] { impl->scanning = true; });
        if (world.scansEnd) {
            impl->push([impl, &world] {
                impl->publish(&ManagerImpl::onScanning, [impl, &world] {
                    impl->scanning = false;
                    impl->listStays = world.resultsReachNobody;
                    world.inRange.insert(world.inRange.end(), world.foundByScan.begin(),
                                         world.foundByScan.end());
                });
            });
        }
    });
}

bool Manager::isScanning() const {
    return impl_->read(&ManagerImpl::scanning);
}

void Manager::onScanningChanged(std::function<void()> callback) {
    impl_->listen(&ManagerImpl::onScanning, std::move(callback));
}

std::vector<WifiNetwork> Manager::networks() {
    return impl_->read(&ManagerImpl::networks);
}

std::map<std::string, NetworkAccess> Manager::networkAccess() const {
    const std::lock_guard lock(impl_->world.mutex);
    return impl_->world.access;
}

void Manager::onNetworksListChanged(std::function<void()> callback) {
    impl_->listen(&ManagerImpl::onNetworks, std::move(callback));
}

std::set<std::string> Manager::eapMethods() const {
    return impl_->world.eapMethods;
}

std::set<std::string> Manager::phase2Methods() const {
    return {"GTC", "MSCHAP", "MSCHAPV2", "PAP"};
}

ConnectResult Manager::validate(const ConnectionSettings& settings, const Certificates& certificates) const {
    if (certificates.caFile.empty() && !certificates.serverDomain.empty()) {
        return ConnectResult::caFileMissing;
    }
    const bool psk =
        settings.securityMode == SecurityMode::wpaPsk || settings.securityMode == SecurityMode::rsnPsk;
    if (psk && settings.password.size() < 8) {
        return ConnectResult::passwordTooShort;
    }
    if (!settings.eapMethod.empty() && !eapMethods().contains(settings.eapMethod)) {
        return ConnectResult::eapMethodUnsupported;
    }
    if (settings.securityMode == SecurityMode::unsupported) {
        return ConnectResult::securityModeUnsupported;
    }
    return settings.ssid.find('\0') == std::string::npos ? ConnectResult::ok : ConnectResult::notSendable;
}

ConnectResult Manager::connect(const ConnectionSettings& settings, const Certificates& certificates) {
    const ConnectResult verdict = validate(settings, certificates);
    if (verdict != ConnectResult::ok) {
        return verdict;
    }
    impl_->push([impl = impl_.get(), settings] {
        impl->beginAttempt(settings.ssid);
        {
            const std::lock_guard lock(impl->world.mutex);
            impl->world.saved.insert(settings.ssid);
            impl->world.password = settings.password;
        }
        impl->othersDisabled = true;
        impl->world.record("connect " + settings.ssid);
        impl->play(settings.ssid);
    });
    if (impl_->world.connectsAtOnce) {
        impl_->untilResting();
    }
    return ConnectResult::ok;
}

void Manager::connectConfigured(const std::string& ssid) {
    {
        const std::lock_guard lock(impl_->world.mutex);
        impl_->world.asked = true;
        impl_->world.changed.notify_all();
    }
    impl_->push([impl = impl_.get(), ssid] {
        impl->beginAttempt(ssid);
        if (impl->world.hasSaved(ssid)) {
            impl->othersDisabled = true;
            impl->world.record("select " + ssid);
        }
    });
    impl_->push([impl = impl_.get(), ssid] { impl->play(ssid); });
}

void Manager::disconnect() {
    impl_->push([impl = impl_.get()] {
        impl->setDisconnected(Reason::causedByUser);
        impl->publishConnection();
        {
            const std::lock_guard lock(impl->world.mutex);
            impl->world.connection = {};
        }
        impl->world.record("disconnect");
    });
}

void Manager::forgetNetwork(const std::string& ssid) {
    impl_->push([impl = impl_.get(), ssid] {
        if (impl->info.status != Status::disconnected && impl->info.ssid == ssid) {
            impl->setDisconnected(Reason::causedByUser);
        }
        impl->publishConnection();
        {
            const std::lock_guard lock(impl->world.mutex);
            if (!impl->world.saved.contains(ssid)) {
                impl->failures[RequestFailure::unknownNetwork] = FailureReason::none;
            }
            if (!impl->world.removalFails) {
                impl->world.saved.erase(ssid);
            }
        }
        impl->world.record("forget " + ssid);
        impl->saveOwed = true;
    });
}

void Manager::whenCarriedOut(std::function<void(const RequestFailures&)> callback) {
    {
        const std::lock_guard lock(impl_->world.mutex);
        impl_->world.asked = true;
        impl_->world.changed.notify_all();
    }
    impl_->push([impl = impl_.get(), callback = std::move(callback)] { impl->due.push_back(callback); });
}

ConnectionInfo Manager::connectionInfo() const {
    return connectionDetails().info;
}

ConnectionDetails Manager::connectionDetails() const {
    return impl_->read(&ManagerImpl::published);
}

void Manager::onConnectionDetailsChanged(std::function<void()> callback) {
    impl_->listen(&ManagerImpl::onConnection, std::move(callback));
}

}  // namespace kaz::wifi
