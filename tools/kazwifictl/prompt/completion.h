#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

// The completions at the prompt of a word that begins with `start`, after the words `before`: commands, the options
// of a command, the words of --security, or SSIDs that can be typed (after `forget` only saved ones).
std::vector<std::string> completions(const std::vector<std::string>& before, std::string_view start,
                                     const Snapshot& view);

}  // namespace kaz::ctl
