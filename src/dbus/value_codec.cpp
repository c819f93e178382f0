#include "dbus/value_codec.h"

#include <kaz/dbus/dbus_error.h>

#include <cerrno>

namespace kaz::dbus {

CodecError sdBusError(int code) {
    return CodecError(DbusError(code).error());
}

CodecError nestedError(std::string_view prefix, const std::string& inner) {
    return CodecError(std::string(prefix) + inner);
}

namespace detail {

int peekType(sd_bus_message* message, char& type) {
    return sd_bus_message_peek_type(message, &type, nullptr);
}

int enterVariant(sd_bus_message* message) {
    const char* contents = nullptr;
    if (const int r = sd_bus_message_peek_type(message, nullptr, &contents); r < 0) {
        return r;
    }
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents);
}

int enterVariantOf(sd_bus_message* message, const char* signature) {
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, signature);
}

int enterArrayOf(sd_bus_message* message, const char* elementSignature) {
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, elementSignature);
}

int exitContainer(sd_bus_message* message) {
    return sd_bus_message_exit_container(message);
}

int takeBasic(sd_bus_message* message, char type, void* value) {
    return sd_bus_message_read_basic(message, type, value);
}

CodecError takeError(int result) {
    return sdBusError(result == 0 ? -ENXIO : result);
}

}  // namespace detail

CodecResult<std::vector<unsigned char>> Wire<std::vector<unsigned char>>::read(sd_bus_message* message) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message, SD_BUS_TYPE_BYTE, &bytes, &size) < 0) {
        // The array is invalid, and its elements show where. Or the sender has the other byte order: then sd-bus gives no
        // access to arrays, not even of bytes.
        return detail::ArrayWire<std::vector<unsigned char>, unsigned char>::read(message);
    }
    const auto* first = static_cast<const unsigned char*>(bytes);
    return std::vector<unsigned char>(first, first + size);
}

namespace {

CodecResult<void> appendBasic(sd_bus_message* message, char type, const void* value) {
    if (const int r = sd_bus_message_append_basic(message, type, value); r < 0) {
        return sdBusError(r);
    }
    return {};
}

// sd-bus would truncate a text at its first NUL.
CodecResult<void> appendText(sd_bus_message* message, char type, const std::string& text) {
    if (text.find('\0') != std::string::npos) {
        return sdBusError(-EINVAL);
    }
    return appendBasic(message, type, text.c_str());
}

}  // namespace

template <>
CodecResult<void> write(sd_bus_message* message, const int& value) {
    return appendBasic(message, SD_BUS_TYPE_INT32, &value);
}

template <>
CodecResult<void> write(sd_bus_message* message, const bool& value) {
    const int wide = value ? 1 : 0;
    return appendBasic(message, SD_BUS_TYPE_BOOLEAN, &wide);
}

template <>
CodecResult<void> write(sd_bus_message* message, const std::string& value) {
    return appendText(message, SD_BUS_TYPE_STRING, value);
}

template <>
CodecResult<void> write(sd_bus_message* message, const OPath& value) {
    return appendText(message, SD_BUS_TYPE_OBJECT_PATH, value.str());
}

}  // namespace kaz::dbus
