#include "kazwifictl/prompt/words_of_line.h"

namespace kaz::ctl {
namespace {

// The second value is whether the line ends inside a word.
std::pair<SplitLine, bool> splitAtBlanks(std::string_view line) {
    SplitLine result;
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
            result.words.emplace_back();
            result.lastBegins = i;
            inWord = true;
        }
        const bool escapes = letter == '\\' && quote != '\'' && i + 1 < line.size();
        if (escapes) {
            result.words.back() += line[++i];
        } else if (quote == '\0' && (letter == '\'' || letter == '"')) {
            quote = letter;
        } else if (letter == quote) {
            quote = '\0';
        } else {
            result.words.back() += letter;
        }
    }
    result.quoteIsOpen = quote != '\0';
    return {result, inWord};
}

}  // namespace

SplitLine split(std::string_view line) {
    auto [result, inWord] = splitAtBlanks(line);
    if (!inWord) {
        result.words.emplace_back();
        result.lastBegins = line.size();
    }
    return result;
}

std::optional<std::vector<std::string>> wordsOfLine(std::string_view line) {
    const SplitLine result = splitAtBlanks(line).first;
    return result.quoteIsOpen ? std::nullopt : std::optional(result.words);
}

}  // namespace kaz::ctl
