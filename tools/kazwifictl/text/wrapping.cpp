#include "kazwifictl/text/wrapping.h"

#include <algorithm>
#include <cstddef>

#include "kazwifictl/text/unicode.h"

namespace kaz::ctl {
namespace {

// Without the sequences that begin with ESC [ and end with m.
int shownColumns(std::string_view text) {
    int columns = 0;
    for (std::size_t at = text.find("\x1b["); at != std::string_view::npos; at = text.find("\x1b[")) {
        columns += columnsOf(text.substr(0, at));
        text.remove_prefix(std::min(text.size(), text.find('m', at)));
        text.remove_prefix(std::min<std::size_t>(text.size(), 1));
    }
    return columns + columnsOf(text);
}

// Takes the blanks and then the word that the text begins with.
struct Piece {
    std::size_t blanks = 0;
    std::string_view word;
};

Piece takePiece(std::string_view& text) {
    const std::size_t blanks = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(blanks);
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return {blanks, word};
}

// Where the rest of a line begins: below its last cell that begins in the left half of the screen.
int hangOf(std::string_view line, int columns) {
    constexpr int plainHang = 4;
    int column = 0;
    int hang = 0;
    for (bool first = true; !line.empty(); first = false) {
        const Piece piece = takePiece(line);
        column += static_cast<int>(piece.blanks);
        if (!first && piece.blanks > 1 && !piece.word.empty() && column <= columns / 2) {
            hang = column;
        } else if (first) {
            hang = piece.blanks == 0 ? 0 : column + 2;
        } else if (piece.blanks > 1) {
            hang = std::max(hang, plainHang);
        }
        column += shownColumns(piece.word);
    }
    return hang == 0 ? 0 : std::min(std::max(hang, plainHang), columns / 2);
}

std::string fittedLine(std::string_view line, int columns) {
    if (shownColumns(line) <= columns || line.starts_with("    ")) {
        return std::string(line);
    }
    const int hang = hangOf(line, columns);
    std::string result;
    int used = 0;
    for (bool first = true; !line.empty(); first = false) {
        const Piece piece = takePiece(line);
        const int blanks = static_cast<int>(piece.blanks);
        const int width = shownColumns(piece.word);
        // A cell in the right half begins a line of its own, or else its text would be a narrow strip.
        const bool breaks = !first && (used + blanks + width > columns ||
                                       (blanks > 1 && used + blanks > std::max(hang, columns / 2)));
        if (breaks) {
            result += '\n';
            used = 0;
        }
        const int gap = breaks ? hang : blanks;
        result.append(static_cast<std::size_t>(gap), ' ');
        result += piece.word;
        used += gap + width;
    }
    return result;
}

}  // namespace

std::string wrapped(std::string_view text, int columns) {
    std::string result;
    int used = 0;
    while (columns > 0 && !text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        const int width = shownColumns(word);
        const bool first = result.empty();
        const bool fits = used + 1 + width <= columns;
        result += first ? "" : (fits ? " " : "\n");
        used = first || !fits ? width : used + 1 + width;
        result += word;
        text.remove_prefix(std::min(text.size(), word.size() + 1));
    }
    return columns > 0 ? result : std::string(text);
}

std::string fitted(std::string_view text, int columns) {
    if (columns <= 0) {
        return std::string(text);
    }
    std::string result;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        result += fittedLine(text.substr(0, end), columns);
        result += end == std::string_view::npos ? "" : "\n";
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return result;
}

}  // namespace kaz::ctl
