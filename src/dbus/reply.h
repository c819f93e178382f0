#pragma once

#include "base/sd_bus/handles.h"
#include "dbus/message_io.h"

#include <kaz/dbus/message.h>

#include <utility>

namespace kaz::dbus {

// The answer to a call: owns the reply message. False when the call failed; every read then fails quietly,
// since the failure of the call was logged when it happened.
class Reply {
  public:
    explicit Reply(MessageDecoder decoder) noexcept
        : message_(decoder.message), decoder_{decoder.message, decoder.ok && decoder.message != nullptr} {}

    explicit operator bool() const noexcept { return message_ != nullptr; }

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
