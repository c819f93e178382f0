// Detects what a platform's D-Bus library offers beyond the required operations. The library builds with or
// without these, and CMake reports the missing ones (cmake/KazPlatformHelp.cmake).
#pragma once

#include <functional>
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

}  // namespace kaz::dbus
