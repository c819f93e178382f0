#include "records.h"

namespace kaz::dbus::detail {

int enterDictionary(sd_bus_message* message, EntryType& entries) {
    const char* contents = nullptr;
    if (const int r = sd_bus_message_peek_type(message, nullptr, &contents); r < 0) {
        return r;
    }
    const int r = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, contents);
    const bool usual = r > 0 && std::string_view(contents) == "{sv}";
    entries = usual ? EntryType::stringToVariant : EntryType::other;
    return r;
}

int enterNextEntry(sd_bus_message* message, EntryType entries) {
    if (entries == EntryType::stringToVariant) {
        return sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
    }
    const char* contents = nullptr;
    // An error here counts as the end: leaving the array afterwards tells what is really wrong.
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
    const char* const types = entries == EntryType::stringToVariant ? "v" : nullptr;
    if (const int r = sd_bus_message_skip(message, types); r < 0) {
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
