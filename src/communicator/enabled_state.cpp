// The user's on/off choice in the device's configuration file.
#include "base/log.h"
#include "communicator/dbus_communicator.h"

#include <kaz/util/kaz_config.h>

namespace kaz::wifi {
namespace {

constexpr const char* enabledKey = "wifi";

}  // namespace

// A missing value means on, so that a new device has Wi-Fi. An unknown value means off.
bool DbusCommunicator::readEnabledConfiguration() {
    const auto configuration = util::readKazConfig();
    const auto entry = configuration.find(enabledKey);
    if (entry == configuration.end() || entry->second == "on") {
        return true;
    }
    if (entry->second != "off") {
        log::warn("Wifi set to \"{}\", which we can't parse. Leaving wifi off.", entry->second);
    }
    return false;
}

bool DbusCommunicator::writeEnabledConfiguration(bool enabled) {
    const char* const value = enabled ? "on" : "off";
    const bool written = util::updateKazConfig(enabledKey, value);
    if (!written) {
        log::warn("Couldn't write {}={} to config.", enabledKey, value);
    }
    return written;
}

}  // namespace kaz::wifi
