#pragma once

#include "base/sd_bus/handles.h"
#include "dbus/message_io.h"

#include <kaz/dbus/message.h>

#include <string>
#include <utility>

namespace kaz::dbus {

// The reply to a call; owns its message. It is false if the call failed. Reads then fail without a log
// record, because the failed call was logged.
class Reply {
  public:
    explicit Reply(MessageDecoder decoder) noexcept
        : message_(decoder.message), decoder_{decoder.message, decoder.ok && decoder.message != nullptr} {}

    explicit operator bool() const noexcept { return message_ != nullptr; }

    // The unique name of the connection that replied; empty if the call failed.
    std::string sender() const {
        const char* name = message_ ? sd_bus_message_get_sender(message_.get()) : nullptr;
        return name == nullptr ? std::string() : name;
    }

    // The next value of the reply.
    template <typename T>
    CodecResult<T> read() {
        return dbus::read<T>(decoder_);
    }

  private:
    MessagePtr message_;
    MessageDecoder decoder_;
};

}  // namespace kaz::dbus
