// Reads and writes the values of D-Bus messages. What travels how is known at compile time: Wire<T> names the
// D-Bus type of T and reads one value of it; everything else composes from there.
//
//   T                                   D-Bus type
//   int                                 i
//   short                               n
//   unsigned char                       y
//   bool                                b
//   std::string                         s
//   std::string_view (read only)        s, valid as long as the message
//   OPath                               o
//   std::optional<U>                    that of U; a read never gives an empty one
//   std::vector<U>, std::set<U>         aX with X that of U
//   a record (record_codec.h)           a{sv}
//
// Errors are values: an sd-bus failure gives the bare text of its code, and each level around it adds a
// prefix. After a failed read the message's position is undefined; it is to be given up.
#pragma once

#include "codec_result.h"

#include <kaz/dbus/opath.h>
#include <systemd/sd-bus.h>

#include <array>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::dbus {

template <typename T>
struct Wire;

// Reads one complete value. A value inside any number of variants reads like the bare value, so that the same
// read serves property Get replies and plain ones.
template <typename T>
CodecResult<T> read(sd_bus_message* message);

// Reads one value into `target`, which stays as it was on failure.
template <typename T>
CodecResult<void> fillHelper(T& target, sd_bus_message* message) {
    CodecResult<T> value = read<T>(message);
    if (!value) {
        return CodecError(std::move(value.error()));
    }
    target = std::move(*value);
    return {};
}

// Appends one value of a basic type: int (i), bool (b), std::string (s), OPath (o). A text that D-Bus cannot
// carry (one with a NUL byte, or not in UTF-8) fails.
template <typename T>
CodecResult<void> write(sd_bus_message* message, const T& value);

template <>
CodecResult<void> write(sd_bus_message* message, const int& value);
template <>
CodecResult<void> write(sd_bus_message* message, const bool& value);
template <>
CodecResult<void> write(sd_bus_message* message, const std::string& value);
template <>
CodecResult<void> write(sd_bus_message* message, const OPath& value);

namespace detail {

// Steps that do not depend on the type read. The int results are sd-bus return codes.
int peekType(sd_bus_message* message, char& type);
int enterVariant(sd_bus_message* message);
int exitContainer(sd_bus_message* message);
bool anotherElement(sd_bus_message* message);

// Reads a basic value; a missing one is an error, never an unset `value`.
int readBasic(sd_bus_message* message, char type, void* value);

template <typename T, char code>
struct BasicWire {
    static constexpr std::array signature{code, '\0'};

    static CodecResult<T> read(sd_bus_message* message) {
        T value{};
        if (const int r = readBasic(message, code, &value); r < 0) {
            return sdBusError(r);
        }
        return value;
    }
};

template <typename T, char code>
struct TextWire {
    static constexpr std::array signature{code, '\0'};

    static CodecResult<T> read(sd_bus_message* message) {
        const char* text = nullptr;
        if (const int r = readBasic(message, code, static_cast<void*>(&text)); r < 0) {
            return sdBusError(r);
        }
        return T(text);
    }
};

template <typename Container, typename Element>
struct ArrayWire {
    static CodecResult<Container> read(sd_bus_message* message) {
        if (const int r =
                sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, Wire<Element>::signature.data());
            r < 0) {
            return sdBusError(r);
        }
        Container values;
        while (anotherElement(message)) {
            CodecResult<Element> element = dbus::read<Element>(message);
            if (!element) {
                return nestedError("Unable to read from array: ", element.error());
            }
            values.insert(values.end(), std::move(*element));
        }
        if (const int r = exitContainer(message); r < 0) {
            return sdBusError(r);
        }
        return values;
    }
};

}  // namespace detail

template <>
struct Wire<int> : detail::BasicWire<int, SD_BUS_TYPE_INT32> {};
template <>
struct Wire<short> : detail::BasicWire<short, SD_BUS_TYPE_INT16> {};
template <>
struct Wire<unsigned char> : detail::BasicWire<unsigned char, SD_BUS_TYPE_BYTE> {};
template <>
struct Wire<std::string> : detail::TextWire<std::string, SD_BUS_TYPE_STRING> {};
template <>
struct Wire<std::string_view> : detail::TextWire<std::string_view, SD_BUS_TYPE_STRING> {};
template <>
struct Wire<OPath> : detail::TextWire<OPath, SD_BUS_TYPE_OBJECT_PATH> {};

template <>
struct Wire<bool> {
    static constexpr std::array signature{static_cast<char>(SD_BUS_TYPE_BOOLEAN), '\0'};

    // sd-bus writes a whole int.
    static CodecResult<bool> read(sd_bus_message* message) {
        int value = 0;
        if (const int r = detail::readBasic(message, SD_BUS_TYPE_BOOLEAN, &value); r < 0) {
            return sdBusError(r);
        }
        return value != 0;
    }
};

template <typename T>
struct Wire<std::optional<T>> {
    static CodecResult<std::optional<T>> read(sd_bus_message* message) {
        CodecResult<T> value = Wire<T>::read(message);
        if (!value) {
            return CodecError(std::move(value.error()));
        }
        return std::optional<T>(std::move(*value));
    }
};

template <typename T>
struct Wire<std::vector<T>> : detail::ArrayWire<std::vector<T>, T> {};

template <typename T>
struct Wire<std::set<T>> : detail::ArrayWire<std::set<T>, T> {};

// Bytes lie in the message as they are wanted, so they are copied in one piece.
template <>
struct Wire<std::vector<unsigned char>> {
    static CodecResult<std::vector<unsigned char>> read(sd_bus_message* message);
};

template <typename T>
CodecResult<T> read(sd_bus_message* message) {
    char type = 0;
    if (const int r = detail::peekType(message, type); r < 0) {
        return sdBusError(r);
    }
    if (type != SD_BUS_TYPE_VARIANT) {
        return Wire<T>::read(message);
    }
    if (const int r = detail::enterVariant(message); r < 0) {
        return sdBusError(r);
    }
    CodecResult<T> inner = read<T>(message);
    if (!inner) {
        return nestedError("Unable to read from variant: ", inner.error());
    }
    if (const int r = detail::exitContainer(message); r < 0) {
        return sdBusError(r);
    }
    return inner;
}

}  // namespace kaz::dbus
