#include "communicator/configured_ssid.h"

#include "base/hex.h"

namespace kaz::wifi {

std::optional<std::string> decodeConfiguredSsid(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        return std::string(text.substr(1, text.size() - 2));
    }
    return fromHex(text);
}

}  // namespace kaz::wifi
