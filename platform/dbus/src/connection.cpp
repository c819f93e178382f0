#include "platform/dbus/connection.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

#include "base/errno_text.h"
#include "base/guard.h"
#include "base/log.h"

namespace kaz::dbus {
namespace {

constexpr std::chrono::seconds callTimeout{10};

}  // namespace

Connection::~Connection() {
    drop();
}

void Connection::open(sd_event* event) noexcept {
    event_ = event;
    if (const int result = attempt(); result < 0) {
        runGuarded("connecting to the system bus",
                   [&] { log::error("Cannot connect to the system bus: {}", errnoText(result)); });
        retryLater();
    }
}

void Connection::close() noexcept {
    if (bus_) {
        sd_bus_flush(bus_.get());
    }
    drop();
}

bool Connection::endTurn() noexcept {
    if (bus_ && sd_bus_is_open(bus_.get()) <= 0) {
        lose();
        return true;
    }
    if (retryAt_ && *retryAt_ <= Clock::now()) {
        retry();
        return true;
    }
    return false;
}

bool Connection::handleReadAhead() noexcept {
    uint64_t waiting = 0;
    return bus_ && sd_bus_get_n_queued_read(bus_.get(), &waiting) >= 0 && waiting > 0 &&
           sd_bus_process(bus_.get(), nullptr) > 0;
}

void Connection::setChangeTask(ChangeTask task) {
    changeTask_.set(std::move(task));
}

void Connection::lose() noexcept {
    drop();
    if (killSwitch_.pulled()) {
        return;
    }
    log::error("Lost the connection to the system bus");
    // Keep the pauses also for a bus that accepts the connection and then closes it.
    if (Clock::now() - openedAt_ >= pauses_.longest) {
        pause_ = pauses_.shortest;
    }
    retryLater();
    tellChange(false);
}

void Connection::retryLater() noexcept {
    retryAt_ = Clock::now() + pause_;
    pause_ = std::min(2 * pause_, pauses_.longest);
}

void Connection::retry() noexcept {
    retryAt_.reset();
    const int result = attempt();
    if (killSwitch_.pulled()) {
        return;
    }
    if (result < 0) {
        retryLater();
        return;
    }
    log::info("Connected to the system bus");
    tellChange(true);
}

void Connection::tellChange(bool connected) noexcept {
    runGuarded("connection task", [&] { changeTask_(connected); });
}

int Connection::attempt() noexcept {
    int result = -ENOMEM;
    runGuarded("connecting to the system bus", [&] { result = tryOpen(); });
    if (result < 0) {
        drop();
    }
    return result;
}

int Connection::tryOpen() {
    int result = connect();
    if (result >= 0) {
        result = signals_.attach(bus_.get());
    }
    if (result >= 0) {
        openedAt_ = Clock::now();
    }
    return result;
}

int Connection::connect() {
    sd_bus* opened = nullptr;
    int result = sd_bus_open_system(&opened);
    if (result < 0) {
        return result;
    }
    bus_.reset(opened);
    sd_bus_set_exit_on_disconnect(opened, 0);
    sd_bus_set_method_call_timeout(opened, toMicroseconds(callTimeout));
    result = waitToBeLetIn();
    return result < 0 ? result : sd_bus_attach_event(opened, event_, SD_EVENT_PRIORITY_NORMAL);
}

int Connection::waitToBeLetIn() {
    // sd-bus would do this in the first call, without this limit.
    const auto deadline = Clock::now() + callTimeout;
    while (sd_bus_is_ready(bus_.get()) <= 0) {
        // Each time, because the next address of a list has another socket.
        if (const int guarded = killSwitch_.guard(sd_bus_get_fd(bus_.get())); guarded < 0) {
            return guarded;
        }
        const int processed = sd_bus_process(bus_.get(), nullptr);
        if (processed < 0) {
            return processed;
        }
        if (sd_bus_is_open(bus_.get()) <= 0) {
            return -ECONNRESET;
        }
        if (processed > 0) {
            continue;
        }
        const auto left = deadline - Clock::now();
        if (left <= Clock::duration::zero()) {
            return -ETIMEDOUT;
        }
        const int waited = sd_bus_wait(bus_.get(), toMicroseconds(left));
        if (waited < 0 && waited != -EINTR) {
            return waited;
        }
    }
    return 0;
}

void Connection::drop() noexcept {
    sd_bus_close(bus_.get());  // first, so that no RemoveMatch calls are sent
    signals_.detach();
    killSwitch_.release();
    bus_.reset();
}

}  // namespace kaz::dbus
