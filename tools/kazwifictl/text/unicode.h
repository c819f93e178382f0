#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kaz::ctl {

// One step through bytes that may or may not be UTF-8.
struct CodePoint {
    char32_t value = 0;      // the character, or the byte itself when it begins no valid sequence
    std::size_t length = 1;  // the bytes it takes
    bool valid = true;       // false: a byte that is no part of valid UTF-8
};

// The character at `at`, which lies inside `text`. Overlong forms, surrogates and values above U+10FFFF are
// not valid.
CodePoint codePointAt(std::string_view text, std::size_t at);

std::string toUtf8(char32_t value);

// Whether a character shows itself and nothing else. Controls and unassigned characters do not, nor those
// that are invisible (joiners, fillers, tags), that alter the layout of their neighbours (direction marks),
// that have no common meaning (private use), or that look like the plain blank.
bool isShowable(char32_t value);

// The columns that a showable character takes on a terminal: 0 for combining marks, 2 for wide characters.
int columnsOf(char32_t value);

// The columns that `text`, made of showable characters and plain blanks, takes.
int columnsOf(std::string_view text);

// `text` cut to at most `columns`, ending in `ellipsis` when something was cut off. A character is taken
// whole, with the marks that combine with it, or not at all, so the result may be a column short.
std::string cutTo(std::string_view text, int columns, std::string_view ellipsis);

// `text` with blanks added up to `columns`.
std::string paddedTo(std::string_view text, int columns);

// Whether a character is written from right to left, or is a digit of such a script.
bool isRightToLeft(char32_t value);

}  // namespace kaz::ctl
