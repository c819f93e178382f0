#include "kazwifictl/text/signal_strength.h"

#include <wifi/types.h>

#include <array>
#include <string_view>

namespace kaz::ctl {

int barsOf(int dBm) {
    constexpr std::array limits{-85, -75, -67, -55};
    int bars = 0;
    for (const int limit : limits) {
        bars += dBm >= limit ? 1 : 0;
    }
    return bars;
}

std::string barsText(int dBm, bool utf8) {
    constexpr std::array<std::string_view, 4> steps{"▂", "▄", "▆", "█"};
    std::string text;
    for (int bar = 0; bar < 4; ++bar) {
        const bool reached = bar < barsOf(dBm);
        text += reached ? (utf8 ? steps.at(static_cast<std::size_t>(bar)) : "#") : (utf8 ? "_" : ".");
    }
    return text;
}

std::optional<int> knownSignal(int dBm) {
    const bool unknown = dBm == wifi::NoSignaldBm || dBm == 0;
    return unknown ? std::nullopt : std::optional(dBm);
}

}  // namespace kaz::ctl
