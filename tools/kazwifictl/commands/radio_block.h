#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// What keeps the radio silent, and what mends it.
struct RadioBlock {
    std::string_view kind;  // "soft" or "hard", the words of rfkill
    std::string why;
    std::string advice;

    Failure failure(const std::string& what) const { return {ExitCode::noStack, what, why, advice}; }
};

// Asks the kernel. Nothing if the radio is free, or if the kernel does not tell.
std::optional<RadioBlock> radioBlock();

}  // namespace kaz::ctl
