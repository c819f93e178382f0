#include "integration/kazwifictl/screen_picture.h"

#include <fmt/format.h>

#include <map>
#include <sstream>
#include <string_view>

namespace kaz::test {
namespace {

// The colours of a terminal, by the number of their sequence.
using Palette = std::map<std::string, std::string>;

const Palette& paletteOf(Background background) {
    static const Palette light{{"paper", "#ffffff"},       {"ink", "#24292f"},
                               {"2", "fill=\"#6e7781\""},  {"1", "font-weight=\"bold\""},
                               {"31", "fill=\"#b3202a\""}, {"32", "fill=\"#116329\""},
                               {"33", "fill=\"#7d4e00\""}};
    static const Palette dark{{"paper", "#0d1117"},       {"ink", "#e6edf3"},
                              {"2", "fill=\"#8b949e\""},  {"1", "font-weight=\"bold\""},
                              {"31", "fill=\"#ff7b72\""}, {"32", "fill=\"#3fb950\""},
                              {"33", "fill=\"#d29922\""}};
    return background == Background::light ? light : dark;
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char letter : text) {
        switch (letter) {
            case '<':
                result += "&lt;";
                break;
            case '&':
                result += "&amp;";
                break;
            default:
                result += letter;
        }
    }
    return result;
}

// One line, whose coloured parts are spans.
std::string lineOf(std::string_view line, const Palette& palette) {
    std::string result;
    for (std::size_t at = line.find("\x1b["); at != std::string_view::npos; at = line.find("\x1b[")) {
        const std::size_t end = line.find('m', at);
        const std::string code(line.substr(at + 2, end - at - 2));
        result += escaped(line.substr(0, at));
        result += code == "0" ? "</tspan>" : "<tspan " + palette.at(code) + ">";
        line.remove_prefix(end + 1);
    }
    return result + escaped(line);
}

}  // namespace

std::string pictureOf(const std::string& command, const std::string& text, Background background) {
    constexpr int lineHeight = 20;
    constexpr int margin = 16;
    const Palette& palette = paletteOf(background);
    std::string rows;
    int y = margin;
    std::istringstream lines("$ " + command + "\n" + text);
    for (std::string line; std::getline(lines, line); y += lineHeight) {
        rows += fmt::format("<text x=\"{}\" y=\"{}\">{}</text>\n", margin, y + lineHeight * 3 / 4,
                            lineOf(line, palette));
    }
    constexpr int width = 80 * 9 + 2 * margin;
    return fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\">\n"
        "<rect width=\"100%\" height=\"100%\" rx=\"8\" fill=\"{2}\"/>\n"
        "<g fill=\"{3}\" font-family=\"DejaVu Sans Mono, Menlo, Consolas, monospace\" font-size=\"15\" "
        "xml:space=\"preserve\">\n{4}</g>\n</svg>\n",
        width, y + margin, palette.at("paper"), palette.at("ink"), rows);
}

}  // namespace kaz::test
