#pragma once

#include <initializer_list>
#include <string_view>
#include <utility>

namespace kaz::ctl {

// The text of a value in a table; `otherwise` when the table does not contain the value.
template <typename Value>
std::string_view textOf(Value value, std::initializer_list<std::pair<Value, std::string_view>> table,
                        std::string_view otherwise = "unknown") {
    for (const auto& [each, text] : table) {
        if (each == value) {
            return text;
        }
    }
    return otherwise;
}

}  // namespace kaz::ctl
