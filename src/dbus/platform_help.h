// What a platform's D-Bus library may offer beyond the operations that each one has. Everything that is looked for is
// here: the library is built with or without it, and CMake reports what is missing (cmake/KazPlatformHelp.cmake).
#pragma once

#include <functional>

namespace kaz::dbus {

// The loop connects again when the bus was lost, subscribes its handlers again, and reports both.
template <typename Loop>
concept Reconnects = requires(Loop& loop, std::function<void(bool connected)> task) {
    loop.setConnectionTaskSync(task);
};

// The call helpers keep the text of an error reply out of their log when the call holds a secret.
template <typename Builder>
concept KeepsSecretsFromItsLog = requires(Builder& builder) {
    builder.markSensitive();
};

template <typename Builder>
void keepErrorTextOutOfLog(Builder& builder) {
    if constexpr (KeepsSecretsFromItsLog<Builder>) {
        builder.markSensitive();
    }
}

}  // namespace kaz::dbus
