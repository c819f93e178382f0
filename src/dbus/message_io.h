// Reads from decoders and writes to builders, and logs failures. For the loop thread only.
#pragma once

#include "base/log.h"
#include "dbus/value_codec.h"

#include <kaz/dbus/message.h>

#include <string>
#include <utility>

namespace kaz::dbus {

// Reads the next value. The first failure is logged at warning level. Every later read then fails with
// "Already failed", because the position in the message is unknown.
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

// Appends one argument. A failure is logged at warning level and fails the builder. Does nothing without a
// message.
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
