// The replies of a scripted peer.
#pragma once

#include "base/checked.h"
#include "base/sd_bus/handles.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <string>

namespace kaz::test {

// Makes the reply to a call; null means no reply. Runs on the peer's thread. A failure throws and ends the
// program, so that no test continues with a wrong reply.
using Answer = std::function<dbus::MessagePtr(sd_bus_message* call)>;

// Appends values to a message. Runs on the peer's thread.
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

// Values in the form of sd_bus_message_append(); a std::string is passed as its text. A text passed as a
// pointer must outlive the result.
template <typename... Values>
Append values(std::string types, Values... given) {
    return [types = std::move(types), given...](sd_bus_message* message) {
        checked(sd_bus_message_append(message, types.c_str(), detail::asArgument(given)...), types.c_str());
    };
}

template <typename... Values>
Answer reply(std::string types, Values... given) {
    return replyWith(values(std::move(types), std::move(given)...));
}

}  // namespace kaz::test
