#pragma once

#include <string_view>

namespace kaz {

// Whether D-Bus can carry the text: valid UTF-8 without NUL. As in sd-bus, the noncharacters of Unicode are not valid.
bool isSendableText(std::string_view text) noexcept;

}  // namespace kaz
