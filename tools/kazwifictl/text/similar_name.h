#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kaz::ctl {

// The name that `typed` shows as presentable() and quoted() write it. Different names are never shown alike. Nothing
// when no name is shown so.
std::optional<std::string> nameShownAs(const std::string& typed, const std::vector<std::string>& names);

// The name that a person probably meant by `typed`: equal but for the case, or with few letters different. Nothing when
// none is near, or two are equally near.
std::optional<std::string> similarName(const std::string& typed, const std::vector<std::string>& names);

}  // namespace kaz::ctl
