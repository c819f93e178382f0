#include "dbus/records.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace kaz::dbus::detail {
namespace {

// The size of a number of this type; 0 for any other type.
std::size_t sizeOfNumber(char type) {
    switch (type) {
        case SD_BUS_TYPE_BYTE:
            return 1;
        case SD_BUS_TYPE_INT16:
        case SD_BUS_TYPE_UINT16:
            return 2;
        case SD_BUS_TYPE_INT32:
        case SD_BUS_TYPE_UINT32:
            return 4;
        case SD_BUS_TYPE_INT64:
        case SD_BUS_TYPE_UINT64:
        case SD_BUS_TYPE_DOUBLE:
            return 8;
        default:
            return 0;
    }
}

// sd-bus skips an array element by element, for example the information elements of an access point byte by
// byte. Reading an array of numbers skips it at once.
bool holdsArrayOfNumbers(const char* contents) {
    return contents != nullptr && contents[0] == SD_BUS_TYPE_ARRAY && contents[1] != '\0' &&
           contents[2] == '\0' && sizeOfNumber(contents[1]) > 0;
}

int skipArrayOfNumbers(sd_bus_message* message, char number) {
    const std::array contents{static_cast<char>(SD_BUS_TYPE_ARRAY), number, '\0'};
    const int entered = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents.data());
    if (entered < 0) {
        return entered;
    }
    const void* numbers = nullptr;
    std::size_t size = 0;
    int r = sd_bus_message_read_array(message, number, &numbers, &size);
    if (r < 0 || size % sizeOfNumber(number) != 0) {
        // The length is invalid, and the elements show where. Or the sender has the other byte order: then sd-bus gives no
        // access to the array.
        sd_bus_message_rewind(message, 0);
        r = sd_bus_message_skip(message, contents.data());
    }
    return r < 0 ? r : sd_bus_message_exit_container(message);
}

int skipVariant(sd_bus_message* message) {
    const char* contents = nullptr;
    if (const int r = sd_bus_message_peek_type(message, nullptr, &contents); r < 0) {
        return r;
    }
    if (holdsArrayOfNumbers(contents)) {
        return skipArrayOfNumbers(message, contents[1]);
    }
    return sd_bus_message_skip(message, "v");
}

}  // namespace

int enterDictionary(sd_bus_message* message, EntryType& entries) {
    // It is nearly always this type; otherwise peek.
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") > 0) {
        entries = EntryType::stringToVariant;
        return 1;
    }
    entries = EntryType::other;
    const char* contents = nullptr;
    if (const int r = sd_bus_message_peek_type(message, nullptr, &contents); r < 0) {
        return r;
    }
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, contents);
}

int enterNextEntry(sd_bus_message* message, EntryType entries) {
    if (entries == EntryType::stringToVariant) {
        // Among too many containers sd-bus refuses to enter, also when there is no entry left.
        if (const int r = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv"); r >= 0) {
            return r;
        }
    }
    const char* contents = nullptr;
    // Treat an error as the end: leaving the array then reports the real error.
    if (sd_bus_message_peek_type(message, nullptr, &contents) <= 0) {
        return 0;
    }
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, contents);
}

CodecResult<std::string_view> readKey(sd_bus_message* message, EntryType entries) {
    return entries == EntryType::stringToVariant ? Wire<std::string_view>::read(message)
                                                 : dbus::read<std::string_view>(message);
}

CodecResult<void> skipValue(sd_bus_message* message, EntryType entries) {
    const int r =
        entries == EntryType::stringToVariant ? skipVariant(message) : sd_bus_message_skip(message, nullptr);
    if (r < 0) {
        return sdBusError(r);
    }
    return {};
}

}  // namespace kaz::dbus::detail

namespace kaz::dbus {

template CodecResult<wifi::SystemdUnitProperty> read(sd_bus_message*);
template CodecResult<wifi::ConfiguredSsid> read(sd_bus_message*);
template CodecResult<wifi::BSSData> read(sd_bus_message*);
template CodecResult<wifi::SignalPoll> read(sd_bus_message*);
template CodecResult<NetworkdLinkProperties> read(sd_bus_message*);
template CodecResult<SupplicantInterfaceProperties> read(sd_bus_message*);

}  // namespace kaz::dbus
