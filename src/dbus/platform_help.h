// What a platform's D-Bus library may offer beyond the operations that each one has. Everything that is looked for is
// here: the library is built with or without it, and CMake reports what is missing (cmake/KazPlatformHelp.cmake).
#pragma once

#include <functional>
#include <utility>

namespace kaz::dbus {

// The loop connects again when the bus was lost, subscribes its handlers again, and reports both.
template <typename Loop>
concept Reconnects = requires(Loop& loop, std::function<void(bool connected)> task) {
    loop.setConnectionTaskSync(task);
};

// After the stop the loop gives up a call in flight in time, and runs the idle task once more.
template <typename Loop>
concept EndsInTime = requires {
    Loop::stopGrace;
};

// The call helpers keep the text of an error reply out of their log when the call holds a secret.
template <typename Builder>
concept KeepsSecretsFromItsLog = requires(Builder& builder) {
    builder.markSensitive();
};

// Without the platform's help the task never runs.
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
