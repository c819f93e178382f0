#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kaz::wifi {

// The bytes of an SSID from the text form in which the supplicant keeps it: between double quotes as they
// are, or else as hexadecimal digits. Nothing when it is neither.
std::optional<std::string> decodeConfiguredSsid(std::string_view text);

}  // namespace kaz::wifi
