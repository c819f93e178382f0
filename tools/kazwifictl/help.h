#pragma once

#include <string>

namespace kaz::ctl {

// What --help shows; it fits a screen of 24 lines of 80 columns.
std::string helpText();

// What `help` shows at the prompt.
std::string promptHelpText();

}  // namespace kaz::ctl
