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

// The columns a character takes on a terminal: 0 for combining marks, 2 for wide characters, -1 for those
// that are not to be printed (controls, unassigned ones).
int columnsOf(char32_t value);

// The columns that `text`, made of printable characters, takes.
int columnsOf(std::string_view text);

// `text` cut to at most `columns`, ending in `ellipsis` when something was cut off. A character is taken
// whole, with the marks that combine with it, or not at all, so the result may be a column short.
std::string cutTo(std::string_view text, int columns, std::string_view ellipsis);

// `text` with blanks added up to `columns`.
std::string paddedTo(std::string_view text, int columns);

// Whether a character changes how its neighbours are laid out or is seen by nobody: direction marks and
// overrides, joiners, soft hyphens, fillers, variation selectors, tags.
bool isInvisible(char32_t value);

// Whether a character is written from right to left.
bool isRightToLeft(char32_t value);

}  // namespace kaz::ctl
