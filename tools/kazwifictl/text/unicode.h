#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kaz::ctl {

// A character, or a byte that is not valid UTF-8.
struct CodePoint {
    char32_t value = 0;      // the character, or the invalid byte
    std::string_view bytes;  // of the text
    bool valid = true;       // false: an invalid byte
};

// The characters of a text, which must outlive them. Overlong forms, surrogates and values above U+10FFFF are not
// valid.
std::vector<CodePoint> codePointsOf(std::string_view text);

std::string toUtf8(char32_t value);

// Whether a character is visible and affects nothing else. False for control characters, unassigned characters,
// invisible ones (joiners, fillers, tags), those that alter the layout of their neighbours (direction marks),
// those without a common meaning (private use), and those that look like a blank.
bool isShowable(char32_t value);

// The columns that a showable character takes on a terminal: 0 for combining marks, 2 for wide characters.
int columnsOf(char32_t value);

// The columns that `text`, made of showable characters and plain blanks, takes.
int columnsOf(std::string_view text);

// `text` cut to at most `columns`. If something is cut off, the result ends in `ellipsis`. A character and its
// combining marks are kept or cut off together, so the result may be one column shorter.
std::string cutTo(std::string_view text, int columns, std::string_view ellipsis);

// `text` with blanks added up to `columns`.
std::string paddedTo(std::string_view text, int columns);

// Whether a character is written from right to left, or is a digit of such a script.
bool isRightToLeft(char32_t value);

}  // namespace kaz::ctl
