#include "records.h"

namespace kaz::dbus {
namespace detail {

int enterDictionary(sd_bus_message* message) {
    const char* contents = nullptr;
    if (const int r = sd_bus_message_peek_type(message, nullptr, &contents); r < 0) {
        return r;
    }
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, contents);
}

int enterNextEntry(sd_bus_message* message) {
    const char* contents = nullptr;
    // An error here counts as the end: leaving the array afterwards tells what is really wrong.
    if (sd_bus_message_peek_type(message, nullptr, &contents) <= 0) {
        return 0;
    }
    const int r = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, contents);
    return r == 0 ? 1 : r;
}

}  // namespace detail

template CodecResult<wifi::SystemdUnitProperty> read(sd_bus_message*);
template CodecResult<wifi::ConfiguredSsid> read(sd_bus_message*);
template CodecResult<wifi::BSSData> read(sd_bus_message*);
template CodecResult<wifi::SignalPoll> read(sd_bus_message*);
template CodecResult<NetworkdLinkProperties> read(sd_bus_message*);
template CodecResult<SupplicantInterfaceProperties> read(sd_bus_message*);

}  // namespace kaz::dbus
