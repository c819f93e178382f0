#pragma once

#include <string>
#include <string_view>

namespace kaz::ctl {

// Sequences that set colours and weights take no columns.

// `text` with line breaks in the place of blanks, so that no line has more than `columns`, unless a single word has. 0
// columns: unchanged.
std::string wrapped(std::string_view text, int columns);

// The same of each line of `text`. The rest of a line is indented like the line itself or like its last cell: cells have
// two blanks or more between them. A line that begins with four blanks is a command to paste, and is not broken.
std::string fitted(std::string_view text, int columns);

}  // namespace kaz::ctl
