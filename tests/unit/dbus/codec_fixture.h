#pragma once

#include "dbus/value_codec.h"
#include "doubles/stub_bus/stub_bus.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <string>

namespace kaz::dbus {

// The bare text of an sd-bus failure.
std::string errorText(int code);

inline const std::string wrongType = errorText(-ENXIO);  // also for reading past the end
inline const std::string badMessage = errorText(-EBADMSG);
inline const std::string invalidArgument = errorText(-EINVAL);
inline const std::string notPermitted = errorText(-EPERM);

// Overwrites the first byte of the text (a string, or an object path) in a sealed message. The text is then
// invalid: no sender's library would send it.
void corruptText(sd_bus_message* message, const std::string& text);

class CodecTest : public testing::Test {
  protected:
    // Reads one value of a message with these values, in the form of sd_bus_message_append().
    template <typename T, typename... Values>
    CodecResult<T> readFrom(const char* types, Values... values) {
        return read<T>(bus.sealed(types, values...).get());
    }

    // The text of the error with which that fails.
    template <typename T, typename... Values>
    std::string errorFrom(const char* types, Values... values) {
        return errorOf(readFrom<T>(types, values...));
    }

    template <typename T>
    static std::string errorOf(const CodecResult<T>& result) {
        return result ? "(no error)" : result.error();
    }

    // A sealed message with this one argument.
    template <typename T>
    MessagePtr written(const T& value) {
        MessagePtr message = bus.message();
        const auto result = write(message.get(), value);
        EXPECT_TRUE(result) << result.error();
        test::StubBus::seal(message.get());
        return message;
    }

    test::StubBus bus;
};

}  // namespace kaz::dbus
