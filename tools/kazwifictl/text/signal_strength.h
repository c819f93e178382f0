#pragma once

#include <optional>
#include <string>

namespace kaz::ctl {

// 0 to 4 bars.
int barsOf(int dBm);

// Four columns: "▂▄▆█" with "_" for the bars that are not reached, or "####" with "." in ASCII.
std::string barsText(int dBm, bool utf8);

// A strength as a connection reports it; nothing when that says that none is known.
std::optional<int> knownSignal(int dBm);

}  // namespace kaz::ctl
