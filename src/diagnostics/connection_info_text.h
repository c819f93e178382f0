// Formats a ConnectionInfo with fmt.
#pragma once

#include <fmt/format.h>
#include <wifi/types.h>

#include <string>
#include <string_view>

namespace kaz::wifi {

// The state in one line, with both SSIDs in their redactable form.
std::string toText(const ConnectionInfo& info);

}  // namespace kaz::wifi

// Accepts the format options of a string: fill, alignment, width, precision, '?'.
template <>
struct fmt::formatter<kaz::wifi::ConnectionInfo> : fmt::formatter<std::string_view> {
    auto format(const kaz::wifi::ConnectionInfo& info, fmt::format_context& context) const {
        return fmt::formatter<std::string_view>::format(kaz::wifi::toText(info), context);
    }
};
