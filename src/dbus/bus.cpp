#include "dbus/bus.h"

#include "base/guard.h"
#include "base/log.h"
#include "dbus/platform_help.h"

#include <unistd.h>

#include <cstdint>
#include <utility>

namespace kaz::dbus {

Bus::Bus(std::chrono::milliseconds callLimit)
    : process_(::getpid()), callLimit_(callLimit), owners_(std::make_unique<NameOwners>(callLimit / 2)) {}

Bus::~Bus() {
    if (inherited()) {
        static_cast<void>(owners_.release());  // the connection is the parent's
    }
}

bool Bus::inherited() const noexcept {
    return ::getpid() != process_;
}

void Bus::start() {
    started_ = true;
    loop_.startEventLoopAsync();
}

void Bus::stop() {
    // A forked child must not wait for a lock that a thread of the parent holds in its copy of the memory.
    if (!inherited()) {
        tasks_.close();
        loop_.stopEventLoopAsync();
    }
}

void Bus::pushTask(std::function<void()> task) {
    if (tasks_.push(std::move(task))) {
        loop_.pushTaskAsync([this] { tasks_.runOne(); });
    }
}

void Bus::setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) {
    loop_.setIdleTaskSync([this, task = std::move(task)] {
        // If the task throws, what it waits for is not known.
        std::optional<std::chrono::milliseconds> delay = std::chrono::seconds(1);
        runGuarded("idle task", [&] { delay = task(); });
        std::optional<std::chrono::milliseconds> next;
        runGuarded("recovery of missed signals", [&] { next = recoverMissedSignals(); });
        return next && (!delay || *next < *delay) ? next : delay;
    });
}

std::optional<std::chrono::milliseconds> Bus::recoverMissedSignals() {
    connection();
    const auto next = owners_->recover();
    if (owners_->takeMissed()) {
        log::info("Signals of the daemons were missed, so all is read again");
        pushTask([this] {
            reportConnection(false);
            reportConnection(true);
        });
    }
    return next ? std::optional(std::chrono::ceil<std::chrono::milliseconds>(*next)) : std::nullopt;
}

void Bus::reportConnection(bool connected) {
    connection();
    if (connectionTask_) {
        connectionTask_(connected);
    }
}

void Bus::configureTimer(bool enable, std::chrono::milliseconds interval) {
    loop_.configureTimerSync(enable, interval);
}

void Bus::setTimerTask(std::function<void()> task) {
    loop_.setTimerCompletedTask([task = std::move(task)] { runGuarded("timer task", task); });
}

void Bus::subscribe(const char* sender, const OPath& path, const char* interface, const char* member,
                    Lifetime lifetime, std::function<void(MessageDecoder&)> handler) {
    if (path.str().empty()) {
        return;
    }
    connection();
    NameOwner& owner = owners_->follow(sender);
    loop_.registerSignalHandlerSync(
        sender, path.str().c_str(), interface, member, lifetime == Lifetime::temporary,
        [this, &owner, sender = std::string(sender), member = std::string(member),
         handler = std::move(handler)](MessageDecoder& decoder) {
            connection();
            if (owner.sent(decoder.message)) {
                runGuarded("signal handler", [&] { handler(decoder); });
                return;
            }
            if (owner.unknown()) {
                log::debug("Dropping {}: the owner of {} is unknown", member, sender);
                return;
            }
            const char* stranger = sd_bus_message_get_sender(decoder.message);
            log::debug("Dropping {}: sent by {}, which does not own {}", member,
                       stranger == nullptr ? "" : stranger, sender);
        });
}

void Bus::dropTemporarySubscriptions() {
    loop_.removeTemporarySignalHandlersSync();
}

void Bus::onConnectionChanged(std::function<void(bool connected)> task) {
    connectionTask_ = std::move(task);
    setConnectionTask(loop_, [this](bool connected) { reportConnection(connected); });
}

void Bus::onOwnerChanged(const char* name, std::function<void(bool owned)> task) {
    if (started_) {
        connection();
    }
    owners_->follow(name).setChangeTask(std::move(task));
}

const std::string& Bus::ownerOf(const char* name) {
    return owners_->follow(name).owner();
}

RemoteObject Bus::object(const char* destination, const OPath& path, const char* interface,
                         CallRecord* record) {
    return {connection(), {destination, path.str(), interface}, record};
}

// The platform may have a new connection. Then the owners on the old one are invalid.
sd_bus* Bus::connection() {
    sd_bus* const present = loop_.getSdBusHandle();
    if (!owners_->attachedTo(present)) {
        if (present != nullptr) {
            sd_bus_set_method_call_timeout(
                present, static_cast<uint64_t>(std::chrono::microseconds(callLimit_).count()));
        }
        owners_->attach(present);
    }
    return present;
}

}  // namespace kaz::dbus
