#include "diagnostics/ssid_redaction.h"

namespace kaz::wifi {

std::string redactableSsid(std::string_view ssid) {
    constexpr std::string_view opening = "ssid=\"";
    std::string text;
    text.reserve(opening.size() + ssid.size() + 1);
    text += opening;
    for (const char byte : ssid) {
        if (byte == '\\' || byte == '"') {
            text += '\\';
        }
        text += byte;
    }
    text += '"';
    return text;
}

}  // namespace kaz::wifi
