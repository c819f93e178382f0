// What a scripted peer can answer to a call.
#pragma once

#include "base/sd_bus/handles.h"
#include "support/scripted_peer/require_success.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <string>

namespace kaz::test {

// Makes the message that answers a call; a null message is no answer at all. Runs on the peer's thread. What cannot be
// made throws, which ends the program: a test is not to go on with another answer than it ordered.
using Answer = std::function<dbus::MessagePtr(sd_bus_message* call)>;

// Appends values to a message that is being written. Runs on the peer's thread.
using Append = std::function<void(sd_bus_message*)>;

Answer replyWith(Append append);
Answer errorReply(std::string name, std::string text);
Answer noReply();

namespace detail {

template <typename T>
T asArgument(T value) {
    return value;
}
inline const char* asArgument(const std::string& value) {
    return value.c_str();
}

}  // namespace detail

// Values as sd_bus_message_append() takes them; a std::string counts as its text. Given as a pointer, a text
// must last as long as this.
template <typename... Values>
Append values(std::string types, Values... given) {
    return [types = std::move(types), given...](sd_bus_message* message) {
        requireSuccess(sd_bus_message_append(message, types.c_str(), detail::asArgument(given)...),
                       types.c_str());
    };
}

template <typename... Values>
Answer reply(std::string types, Values... given) {
    return replyWith(values(std::move(types), std::move(given)...));
}

}  // namespace kaz::test
