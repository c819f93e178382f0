#pragma once

#include <optional>
#include <string>

namespace kaz::ctl {

// 0 to 4 bars.
int barsOf(int dBm);

// Four columns: "▂▄▆█" with "_" for the bars that are not reached, or "####" with "." in ASCII.
std::string barsText(int dBm, bool utf8);

// The signal strength of a ConnectionInfo; nothing when it is unknown (NoSignaldBm or 0).
std::optional<int> knownSignal(int dBm);

}  // namespace kaz::ctl
