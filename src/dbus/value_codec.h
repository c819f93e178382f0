// Reads and writes the values of D-Bus messages. The types are fixed at compile time: Wire<T> names the D-Bus
// type of T and reads one value of it. Containers are composed from these.
//
//   T                                   D-Bus type
//   int                                 i
//   short                               n
//   unsigned short                      q
//   unsigned int                        u
//   unsigned char                       y
//   bool                                b
//   std::string                         s
//   std::string_view (read only)        s, valid as long as the message
//   OPath                               o
//   std::optional<U>                    the type of U; a read never returns nullopt
//   std::vector<U>, std::set<U>         an array of the type of U, which must be basic
//   a record (record_codec.h)           a{sv}
//
// Errors are values: an sd-bus failure gives the text of its code, and each outer level adds a prefix. After
// a failed read the position in the message is undefined, so do not read on.
#pragma once

#include "dbus/codec_result.h"

#include <kaz/dbus/opath.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kaz::dbus {

template <typename T>
struct Wire;

// Reads one complete value, whether or not it is wrapped in variants. So it reads the replies of Properties.Get
// and those of other methods.
template <typename T>
CodecResult<T> read(sd_bus_message* message);

// Reads one value into `target`, which is unchanged on failure.
template <typename T>
CodecResult<void> fillHelper(T& target, sd_bus_message* message) {
    CodecResult<T> value = read<T>(message);
    if (!value) {
        return CodecError(std::move(value.error()));
    }
    target = std::move(*value);
    return {};
}

// Appends one value of a basic type: int (i), bool (b), std::string (s), OPath (o). Fails for a text with NUL
// or invalid UTF-8.
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

// Steps that do not depend on the type. The int results are sd-bus return codes.
int peekType(sd_bus_message* message, char& type);
int enterVariant(sd_bus_message* message);
int enterVariantOf(sd_bus_message* message, const char* signature);
int enterArrayOf(sd_bus_message* message, const char* elementSignature);
int exitContainer(sd_bus_message* message);

// Positive: `value` was read; zero: there is no value; negative: an error.
int takeBasic(sd_bus_message* message, char type, void* value);

// The error for a result of takeBasic() that is not positive.
CodecError takeError(int result);

// The signature of an array of elements with this signature.
template <std::size_t size>
constexpr std::array<char, size + 1> arrayOf(const std::array<char, size>& element) {
    std::array<char, size + 1> signature{SD_BUS_TYPE_ARRAY};
    std::copy(element.begin(), element.end(), signature.begin() + 1);
    return signature;
}

template <typename T, char code>
struct BasicWire {
    static constexpr std::array signature{code, '\0'};

    static int take(sd_bus_message* message, T& value) { return takeBasic(message, code, &value); }
};

// sd-bus writes a boolean into an int.
struct BoolWire {
    static constexpr std::array signature{static_cast<char>(SD_BUS_TYPE_BOOLEAN), '\0'};

    static int take(sd_bus_message* message, bool& value) {
        int wide = 0;
        const int r = takeBasic(message, SD_BUS_TYPE_BOOLEAN, &wide);
        value = wide != 0;
        return r;
    }
};

template <typename T, char code>
struct TextWire {
    static constexpr std::array signature{code, '\0'};

    static int take(sd_bus_message* message, T& value) {
        const char* text = nullptr;
        const int r = takeBasic(message, code, static_cast<void*>(&text));
        if (r > 0) {
            value = T(text);
        }
        return r;
    }
};

template <typename T, typename Take>
struct SingleWire : Take {
    static CodecResult<T> read(sd_bus_message* message) {
        T value{};
        if (const int r = Take::take(message, value); r <= 0) {
            return takeError(r);
        }
        return value;
    }
};

// An array of basic values.
template <typename Container, typename Element>
struct ArrayWire {
    static constexpr auto signature = arrayOf(Wire<Element>::signature);

    static CodecResult<Container> read(sd_bus_message* message) {
        if (const int r = enterArrayOf(message, Wire<Element>::signature.data()); r < 0) {
            return sdBusError(r);
        }
        Container values;
        Element element{};
        int taken = Wire<Element>::take(message, element);
        while (taken > 0) {
            values.insert(values.end(), std::move(element));
            element = Element{};
            taken = Wire<Element>::take(message, element);
        }
        if (taken < 0) {
            return nestedError("Unable to read from array: ", takeError(taken).value());
        }
        if (const int r = exitContainer(message); r < 0) {
            return sdBusError(r);
        }
        return values;
    }
};

}  // namespace detail

template <>
struct Wire<int> : detail::SingleWire<int, detail::BasicWire<int, SD_BUS_TYPE_INT32>> {};
template <>
struct Wire<short> : detail::SingleWire<short, detail::BasicWire<short, SD_BUS_TYPE_INT16>> {};
template <>
struct Wire<unsigned short>
    : detail::SingleWire<unsigned short, detail::BasicWire<unsigned short, SD_BUS_TYPE_UINT16>> {};
template <>
struct Wire<unsigned int>
    : detail::SingleWire<unsigned int, detail::BasicWire<unsigned int, SD_BUS_TYPE_UINT32>> {};
template <>
struct Wire<unsigned char>
    : detail::SingleWire<unsigned char, detail::BasicWire<unsigned char, SD_BUS_TYPE_BYTE>> {};
template <>
struct Wire<bool> : detail::SingleWire<bool, detail::BoolWire> {};
template <>
struct Wire<std::string>
    : detail::SingleWire<std::string, detail::TextWire<std::string, SD_BUS_TYPE_STRING>> {};
template <>
struct Wire<std::string_view>
    : detail::SingleWire<std::string_view, detail::TextWire<std::string_view, SD_BUS_TYPE_STRING>> {};
template <>
struct Wire<OPath> : detail::SingleWire<OPath, detail::TextWire<OPath, SD_BUS_TYPE_OBJECT_PATH>> {};

template <typename T>
struct Wire<std::optional<T>> {
    static constexpr auto signature = Wire<T>::signature;

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

// sd-bus gives access to all bytes of an array, so they are copied at once.
template <>
struct Wire<std::vector<unsigned char>> {
    static constexpr auto signature = detail::arrayOf(Wire<unsigned char>::signature);

    static CodecResult<std::vector<unsigned char>> read(sd_bus_message* message);
};

namespace detail {

// Reads the value inside a variant that was entered.
template <typename T, typename Read>
CodecResult<T> readInVariant(sd_bus_message* message, Read readValue) {
    CodecResult<T> inner = readValue(message);
    if (!inner) {
        return nestedError("Unable to read from variant: ", inner.error());
    }
    if (const int r = exitContainer(message); r < 0) {
        return sdBusError(r);
    }
    return inner;
}

// Like dbus::read, for a next value that is a variant. It nearly always contains the requested type, so this
// enters it without peeking first. If that fails, dbus::read reads the value or finds the error.
template <typename T>
CodecResult<T> readVariant(sd_bus_message* message) {
    if (enterVariantOf(message, Wire<T>::signature.data()) > 0) {
        return readInVariant<T>(message, Wire<T>::read);
    }
    return dbus::read<T>(message);
}

}  // namespace detail

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
    return detail::readInVariant<T>(message, read<T>);
}

}  // namespace kaz::dbus
