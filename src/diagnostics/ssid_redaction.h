#pragma once

#include <string>
#include <string_view>

namespace kaz::wifi {

// An SSID in the form ssid="...", so that it can be found in a log and removed. Quotes and backslashes are
// escaped with a backslash, so that the end of the form is certain. All other bytes are unchanged.
std::string redactableSsid(std::string_view ssid);

}  // namespace kaz::wifi
