#pragma once

#include "doubles/stub_bus/stub_bus.h"
#include "fuzz/dbus_value.h"

#include <string_view>

namespace kaz::fuzz {

inline const test::StubBus& bus() {
    static const test::StubBus instance;
    return instance;
}

// What follows a value in its message.
inline constexpr std::string_view nextText = "next";

// Calls `check` with a message that holds the value and the next text, unless sd-bus refuses the value.
template <typename Check>
void checkMessage(const Value& value, Check check) {
    const dbus::MessagePtr message = bus().message();
    if (append(message.get(), value) && append(message.get(), textValue(std::string(nextText)))) {
        test::StubBus::seal(message.get());
        check(message.get(), value);
    }
}

}  // namespace kaz::fuzz
