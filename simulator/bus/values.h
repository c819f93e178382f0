#pragma once

#include "base/sd_bus/basic_value.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kaz::sim {

struct ObjectPath : std::string {
    explicit ObjectPath(std::string text) : std::string(std::move(text)) {}
};

// An array of bytes.
struct Bytes : std::string {
    explicit Bytes(std::string bytes) : std::string(std::move(bytes)) {}
};

// The types of values on the bus: their signature, and how a message takes and gives them.
template <typename T>
struct Wire;

// The signature of these types in a row.
template <typename... Types>
inline constexpr auto signatureOf = [] {
    constexpr std::size_t longest = 16;
    std::array<char, longest> text{};
    std::size_t size = 0;
    for (const std::string_view part : {std::string_view(), std::string_view(Wire<Types>::signature)...}) {
        for (const char c : part) {
            text.at(size++) = c;
        }
    }
    return text;
}();

template <char Type, typename Value>
struct BasicWire {
    static constexpr char signature[2] = {Type, '\0'};

    static void append(sd_bus_message* message, Value value) {
        checked(sd_bus_message_append_basic(message, Type, &value), "append");
    }
    static Value read(sd_bus_message* message) { return dbus::readBasic<Value>(message, Type); }
};

template <char Type, typename Text>
struct TextWire {
    static constexpr char signature[2] = {Type, '\0'};

    static void append(sd_bus_message* message, const std::string& text) {
        checked(sd_bus_message_append_basic(message, Type, text.c_str()), "append");
    }
    static Text read(sd_bus_message* message) { return Text(dbus::readBasic<const char*>(message, Type)); }
};

template <>
struct Wire<bool> : BasicWire<'b', int> {};
template <>
struct Wire<std::int16_t> : BasicWire<'n', std::int16_t> {};
template <>
struct Wire<std::uint16_t> : BasicWire<'q', std::uint16_t> {};
template <>
struct Wire<std::int32_t> : BasicWire<'i', std::int32_t> {};
template <>
struct Wire<std::uint32_t> : BasicWire<'u', std::uint32_t> {};
template <>
struct Wire<const char*> : TextWire<'s', std::string> {};
template <>
struct Wire<std::string> : TextWire<'s', std::string> {};
template <>
struct Wire<ObjectPath> : TextWire<'o', ObjectPath> {};

template <>
struct Wire<Bytes> {
    static constexpr char signature[] = "ay";

    static void append(sd_bus_message* message, const Bytes& bytes) {
        checked(sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size()), "append bytes");
    }
    static Bytes read(sd_bus_message* message) {
        const void* bytes = nullptr;
        std::size_t size = 0;
        checked(sd_bus_message_read_array(message, 'y', &bytes, &size), "read bytes");
        return Bytes(std::string(static_cast<const char*>(bytes), size));
    }
};

// Appends a container, and what `fill` appends inside it.
template <typename Fill>
void appendContainer(sd_bus_message* message, char type, const char* contents, const Fill& fill) {
    checked(sd_bus_message_open_container(message, type, contents), "open container");
    fill();
    checked(sd_bus_message_close_container(message), "close container");
}

template <typename T>
void appendEntry(sd_bus_message* message, const std::string& key, const T& value) {
    appendContainer(message, 'e', "sv", [&] {
        Wire<std::string>::append(message, key);
        appendContainer(message, 'v', Wire<T>::signature, [&] { Wire<T>::append(message, value); });
    });
}

// Reads a dictionary of the type a{sv}. `readVariant` must read or skip the variant after the key.
template <typename ReadVariant>
void readEntries(sd_bus_message* message, const ReadVariant& readVariant) {
    checked(sd_bus_message_enter_container(message, 'a', "{sv}"), "enter dictionary");
    while (checked(sd_bus_message_enter_container(message, 'e', "sv"), "enter entry") > 0) {
        readVariant(std::string_view(dbus::readBasic<const char*>(message, 's')));
        checked(sd_bus_message_exit_container(message), "exit entry");
    }
    checked(sd_bus_message_exit_container(message), "exit dictionary");
}

template <typename T>
struct Wire<std::vector<T>> {
    static constexpr char signature[3] = {'a', Wire<T>::signature[0], '\0'};

    static void append(sd_bus_message* message, const std::vector<T>& values) {
        appendContainer(message, 'a', Wire<T>::signature, [&] {
            for (const T& value : values) {
                Wire<T>::append(message, value);
            }
        });
    }
};

using Words = std::vector<std::string>;
using Dictionary =
    std::vector<std::pair<std::string, std::variant<std::int32_t, std::uint32_t, std::string, Words>>>;

template <>
struct Wire<Dictionary> {
    static constexpr char signature[] = "a{sv}";

    static void append(sd_bus_message* message, const Dictionary& entries) {
        appendContainer(message, 'a', "{sv}", [&] {
            for (const auto& [key, value] : entries) {
                std::visit([&, &key = key](const auto& v) { appendEntry(message, key, v); }, value);
            }
        });
    }
};

}  // namespace kaz::sim
