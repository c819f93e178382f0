#include "kazwifictl/session/session.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

// An SSID has at most 32 bytes, so there is no network of such a name.
constexpr std::string_view fencePrefix = "kazwifictl: no network has a name as long as this ";

bool isFence(std::string_view ssid) {
    return ssid.substr(0, fencePrefix.size()) == fencePrefix;
}

// A supplicant that runs is being followed well before this; asking the long way takes longer.
constexpr std::chrono::milliseconds headStart{300};
// A system that is merely busy has answered before this.
constexpr std::chrono::milliseconds answerLimit{5000};

// For poll(): the time left, rounded up so that a deadline has passed when poll() returns.
int millisecondsUntil(Clock::time_point deadline) {
    constexpr std::chrono::milliseconds anHour{3'600'000};
    const auto now = Clock::now();
    if (deadline <= now) {
        return 0;
    }
    return static_cast<int>(deadline - now > anHour
                                ? anHour.count()
                                : std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count());
}

// Threads begin with the signals of their maker; those of the device are to leave them to this one.
class AllSignalsBlocked {
  public:
    AllSignalsBlocked() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &former_);
    }
    ~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked(AllSignalsBlocked&&) = delete;
    AllSignalsBlocked& operator=(AllSignalsBlocked&&) = delete;

  private:
    sigset_t former_{};
};

std::unique_ptr<Device> madeQuietly(const DeviceFactory& make) {
    const AllSignalsBlocked blocked;
    return make();
}

Event eventAbout(Device::Aspect aspect, Device& device) {
    const auto now = Clock::now();
    switch (aspect) {
        case Device::Aspect::power:
            return {now, PowerChange{device.isEnabled(), device.isWifiStackInitialized()}};
        case Device::Aspect::scanning:
            return {now, ScanningChange{device.isScanning()}};
        case Device::Aspect::networks:
            return {now, NetworksChange{device.networks()}};
        case Device::Aspect::connection:
            break;
    }
    return {now, ConnectionChange{device.connectionInfo()}};
}

}  // namespace

Session::Session(const DeviceFactory& make, Interrupts& interrupts)
    : make_(make), interrupts_(interrupts), device_(madeQuietly(make)) {
    Device& device = *device_;
    device.listen([this, &device](Device::Aspect aspect) { inbox_.push(eventAbout(aspect, device)); });
    // What changed before the listener was there is known from here, what changes from now on arrives.
    view_ = {device.isEnabled(), device.isWifiStackInitialized(), device.isScanning(), device.networks(),
             device.connectionInfo()};
}

Session::~Session() = default;

Session::Wake Session::next(Clock::time_point deadline) {
    for (;;) {
        std::array<pollfd, 2> waited{{{inbox_.fd(), POLLIN, 0}, {interrupts_.fd(), POLLIN, 0}}};
        const int timeout = millisecondsUntil(deadline);
        ::poll(waited.data(), waited.size(), timeout);
        if (waited[1].revents != 0) {
            if (const auto signal = interrupts_.take()) {
                signal_ = signal;
                return Wake::interrupted;
            }
        }
        if (waited[0].revents != 0) {
            if (auto event = inbox_.take()) {
                deliver(std::move(*event));
                return Wake::event;
            }
        }
        if (timeout == 0) {
            return Wake::timedOut;
        }
    }
}

Session::Wake Session::until(Clock::time_point deadline, const Condition& done) {
    while (!done(view_)) {
        if (const Wake wake = next(deadline); wake != Wake::event) {
            return wake;
        }
    }
    return Wake::event;
}

void Session::takeAll() {
    while (auto event = inbox_.take()) {
        deliver(std::move(*event));
    }
}

Session::Wake Session::untilRunning(Clock::time_point deadline) {
    return until(deadline, [](const View& view) { return view.running; });
}

Session::Start Session::start(std::chrono::milliseconds limit, bool patient) {
    const auto began = Clock::now();
    Wake wake = untilRunning(began + std::min(headStart, limit));
    if (wake == Wake::timedOut) {
        // Asked of another device: a supplicant that runs may have a connection, which this one is to know.
        Session other(make_, interrupts_);
        wake = other.fence(std::max(limit, answerLimit));
        if (wake == Wake::timedOut) {
            return Start::noAnswer;
        }
        signal_ = other.signal_;
        if (wake == Wake::event && other.view_.running) {
            wake = untilRunning(Clock::now() + requestLimit);
        } else if (wake == Wake::event && patient && view_.enabled) {
            wake = untilRunning(began + limit);
        }
    }
    if (wake == Wake::interrupted) {
        return Start::interrupted;
    }
    return view_.running ? Start::running : Start::notRunning;
}

Session::Wake Session::fence(std::chrono::milliseconds limit) {
    // Every fence has a name of its own, or two in a row might leave the record as it is, and show nothing.
    const std::string name = std::string(fencePrefix) + std::to_string(++fences_);
    device_->connectConfigured(name);
    return until(Clock::now() + limit, [&](const View&) { return reached_ == name; });
}

void Session::close() {
    device_.reset();
    takeAll();
}

void Session::deliver(Event event) {
    if (!withoutFence(event)) {
        return;
    }
    if (observer_) {
        observer_(event);
    }
    view_.apply(event);
}

// Whether anything of the event remains when a fence is taken out of it.
bool Session::withoutFence(Event& event) {
    auto* connection = std::get_if<ConnectionChange>(&event.change);
    if (connection == nullptr) {
        return true;
    }
    ConnectionInfo& info = connection->info;
    if (isFence(info.ssid)) {
        reached_ = info.ssid;
        return false;
    }
    if (isFence(info.disconnectSsid)) {
        info.disconnectSsid = view_.connection.disconnectSsid;
        info.disconnectReason = view_.connection.disconnectReason;
        info.disconnectTime = view_.connection.disconnectTime;
    }
    return !(info == view_.connection);
}

}  // namespace kaz::ctl
