#include "kazwifictl/text/similar_name.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <utility>

#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

std::string inLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

// How many bytes must be inserted, removed or replaced to make one text of the other.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = std::exchange(row.front(), i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::optional<std::string> nameShownAs(const std::string& typed, const std::vector<std::string>& names) {
    const auto shown = std::find_if(names.begin(), names.end(), [&typed](const std::string& name) {
        return presentable(name, true) == typed || presentable(name, false) == typed ||
               quoted(name, true) == typed || quoted(name, false) == typed;
    });
    return shown == names.end() ? std::nullopt : std::optional(*shown);
}

std::optional<std::string> similarName(const std::string& typed, const std::vector<std::string>& names) {
    constexpr std::size_t lettersPerMistake = 4;
    const std::string wanted = inLowerCase(typed);
    std::size_t nearest = std::max<std::size_t>(1, typed.size() / lettersPerMistake) + 1;
    std::optional<std::string> found;
    for (const std::string& name : names) {
        const std::size_t far = distance(wanted, inLowerCase(name));
        if (far < nearest && far < name.size()) {
            nearest = far;
            found = name;
        } else if (far == nearest) {
            found.reset();
        }
    }
    return found;
}

}  // namespace kaz::ctl
