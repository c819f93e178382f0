#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kaz::wifi {

// Decodes the supplicant's text form of an SSID: the bytes between double quotes, or hexadecimal digits. Returns
// nullopt for any other text.
std::optional<std::string> decodeConfiguredSsid(std::string_view text);

}  // namespace kaz::wifi
