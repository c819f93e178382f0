#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

// What the word that begins with `start` may become at the prompt, after the words `before` it: commands,
// SSIDs that can be typed (the saved ones after `forget`), or a command's options.
std::vector<std::string> completions(const std::vector<std::string>& before, std::string_view start,
                                     const Snapshot& view);

}  // namespace kaz::ctl
