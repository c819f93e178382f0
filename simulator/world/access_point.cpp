#include "simulator/world/access_point.h"

#include "base/hex.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kaz::sim {
namespace {

constexpr std::array<std::pair<Security, std::string_view>, 7> names = {{
    {Security::open, "open"},
    {Security::wep, "wep"},
    {Security::wpa, "wpa"},
    {Security::wpa2, "wpa2"},
    {Security::wpa2Wpa3, "wpa2-wpa3"},
    {Security::wpa3, "wpa3"},
    {Security::eap, "eap"},
}};

}  // namespace

std::string_view toText(Security security) {
    return std::find_if(names.begin(), names.end(), [&](const auto& n) { return n.first == security; })
        ->second;
}

std::optional<Security> securityFromText(std::string_view text) {
    const auto* const found =
        std::find_if(names.begin(), names.end(), [&](const auto& n) { return n.second == text; });
    return found == names.end() ? std::nullopt : std::optional(found->first);
}

std::optional<std::string> bssidBytes(std::string_view text) {
    constexpr std::size_t length = 17;
    if (text.size() != length) {
        return std::nullopt;
    }
    std::string digits;
    for (std::size_t i = 0; i < length; ++i) {
        if (i % 3 == 2) {
            if (text[i] != ':') {
                return std::nullopt;
            }
        } else {
            digits += text[i];
        }
    }
    return fromHex(digits);
}

}  // namespace kaz::sim
