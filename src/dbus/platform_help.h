// Detects what a platform's D-Bus library offers beyond the required operations. The library builds with or
// without these, and CMake reports the missing ones (cmake/KazPlatformHelp.cmake).
#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <utility>

namespace kaz::dbus {

// The loop reconnects after the loss of the bus, subscribes its handlers again, and reports both.
template <typename Loop>
concept Reconnects = requires(Loop& loop, std::function<void(bool connected)> task) {
    loop.setConnectionTaskSync(task);
};

// After the stop the loop cancels a call in flight in time, and runs the idle task once more.
template <typename Loop>
concept EndsInTime = requires {
    Loop::stopGrace;
};

// The call helpers do not log the text of an error reply to a call with secrets.
template <typename Builder>
concept KeepsSecretsFromItsLog = requires(Builder& builder) {
    builder.markSensitive();
};

// The call helpers tell the name of the error when a call failed.
template <typename Builder>
concept TellsErrors = requires(sd_bus* bus, Builder& builder, std::string& error) {
    sendMessage(bus, builder, error);
};

// Without the platform's support the task never runs.
template <typename Loop, typename Task>
void setConnectionTask(Loop& loop, Task task) {
    if constexpr (Reconnects<Loop>) {
        loop.setConnectionTaskSync(std::move(task));
    }
}

template <typename Builder>
void keepErrorTextOutOfLog(Builder& builder) {
    if constexpr (KeepsSecretsFromItsLog<Builder>) {
        builder.markSensitive();
    }
}

// Sends the call. Without the platform's support `error` stays empty.
template <typename Builder>
auto sendAndTell(sd_bus* bus, Builder& builder, std::string& error) {
    if constexpr (TellsErrors<Builder>) {
        return sendMessage(bus, builder, error);
    } else {
        return sendMessage(bus, builder);
    }
}

}  // namespace kaz::dbus
