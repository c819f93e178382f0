#include "connection.h"

#include <kaz/dbus/dbus_error.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "clock.h"
#include "log.h"

namespace kaz::dbus {
namespace {

constexpr std::chrono::seconds callTimeout{10};

}  // namespace

Connection::~Connection() {
    drop();
}

void Connection::open(sd_event* event) {
    const int result = connect(event);
    if (result < 0) {
        log(spdlog::level::err, "Cannot connect to the system bus: {}", DbusError(result).error());
        drop();
        return;
    }
    signals_.attach(bus_.get());
}

void Connection::close() noexcept {
    if (bus_) {
        sd_bus_flush(bus_.get());
    }
    drop();
}

void Connection::endTurn() noexcept {
    if (bus_ && sd_bus_is_open(bus_.get()) <= 0) {
        if (!killSwitch_.pulled()) {
            log(spdlog::level::err, "Lost the connection to the system bus");
        }
        drop();
    }
}

int Connection::connect(sd_event* event) {
    sd_bus* opened = nullptr;
    int result = sd_bus_open_system(&opened);
    if (result < 0) {
        return result;
    }
    bus_.reset(opened);
    sd_bus_set_exit_on_disconnect(opened, 0);
    sd_bus_set_method_call_timeout(opened, toMicroseconds(callTimeout));
    result = waitToBeLetIn();
    return result < 0 ? result : sd_bus_attach_event(opened, event, SD_EVENT_PRIORITY_NORMAL);
}

int Connection::waitToBeLetIn() {
    // sd-bus would do this within the first call, without this limit.
    const auto deadline = Clock::now() + callTimeout;
    while (sd_bus_is_ready(bus_.get()) <= 0) {
        killSwitch_.guard(sd_bus_get_fd(bus_.get()));  // the next address of a list is another socket
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
    sd_bus_close(bus_.get());  // first: nobody needs to hear that the handlers go
    signals_.detach();
    killSwitch_.release();
    bus_.reset();
}

}  // namespace kaz::dbus
