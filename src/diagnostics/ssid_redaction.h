#pragma once

#include <string>
#include <string_view>

namespace kaz::wifi {

// An SSID in the form ssid="...", by which it can be found and removed in a log. Quotes and backslashes
// inside are escaped with a backslash, so that the end of the form is never in doubt; all other bytes are
// copied as they are.
std::string redactableSsid(std::string_view ssid);

}  // namespace kaz::wifi
