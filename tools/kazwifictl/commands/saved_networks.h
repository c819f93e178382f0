#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kaz::ctl {

// The names of all networks in the supplicant's configuration, in its order, each once. The library reports only those
// in range, so this asks the supplicant itself. Nothing when it does not answer, or not this
// user.
std::optional<std::vector<std::string>> savedSsids();

}  // namespace kaz::ctl
