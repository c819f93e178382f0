// Reading from decoders and writing into builders, with the failures logged. Loop thread only.
#pragma once

#include "base/log.h"
#include "dbus/value_codec.h"

#include <kaz/dbus/message.h>

#include <string>
#include <utility>

namespace kaz::dbus {

// The next value. The first failure is logged at warning level and fails the decoder: every later read gives
// "Already failed", because the position in the message is no longer known.
template <typename T>
CodecResult<T> read(MessageDecoder& decoder) {
    if (!decoder.ok) {
        return CodecError("Already failed");
    }
    CodecResult<T> value = read<T>(decoder.message);
    if (!value) {
        decoder.ok = false;
        log::warn("Error while decoding dbus data. Details: {}", value.error());
    }
    return value;
}

// Appends one argument. A failure is logged at warning level and fails the builder. Does nothing for a
// builder without a message.
template <typename T>
void write(MessageBuilder& builder, const T& value) {
    if (builder.message() == nullptr) {
        return;
    }
    if (auto written = write(builder.message(), value); !written) {
        log::warn("Error while encoding dbus data. Details: {}", written.error());
        builder.fail(std::move(written.error()));
    }
}

}  // namespace kaz::dbus
