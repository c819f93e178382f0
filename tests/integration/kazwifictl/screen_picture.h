#pragma once

#include <string>

namespace kaz::test {

enum class Background { light, dark };

// An SVG of what a terminal with 80 columns shows: `text` with its colours, after the command that wrote it.
std::string pictureOf(const std::string& command, const std::string& text, Background background);

}  // namespace kaz::test
