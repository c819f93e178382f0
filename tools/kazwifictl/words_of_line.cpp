#include "kazwifictl/words_of_line.h"

namespace kaz::ctl {

std::optional<std::vector<std::string>> wordsOfLine(std::string_view line) {
    std::vector<std::string> words;
    bool inWord = false;
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char letter = line[i];
        const bool blank = letter == ' ' || letter == '\t';
        if (blank && quote == '\0') {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        const bool escapes = letter == '\\' && quote != '\'' && i + 1 < line.size();
        if (escapes) {
            words.back() += line[++i];
        } else if (quote == '\0' && (letter == '\'' || letter == '"')) {
            quote = letter;
        } else if (letter == quote) {
            quote = '\0';
        } else {
            words.back() += letter;
        }
    }
    return quote == '\0' ? std::optional(words) : std::nullopt;
}

}  // namespace kaz::ctl
