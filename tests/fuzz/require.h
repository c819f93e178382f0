#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kaz::fuzz {

// Ends the program unless the condition holds; libFuzzer then reports a finding.
inline void require(bool holds, std::string_view rule) {
    if (!holds) {
        std::fprintf(stderr, "BROKEN RULE: %.*s\n", static_cast<int>(rule.size()), rule.data());
        std::abort();
    }
}

}  // namespace kaz::fuzz
