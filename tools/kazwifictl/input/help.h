#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace kaz::ctl {

// What --help shows; it fits a screen of 24 lines of 80 columns.
std::string helpText();

// What `help` shows at the prompt.
std::string promptHelpText();

// How the help of one command is laid out: an option a line, the descriptions in one column, examples as they were
// written. CLI11's own layout differs from one of its releases to the next, and not every one fits a screen.
class HelpLayout : public CLI::Formatter {
  public:
    std::string make_help(const CLI::App* command, std::string name, CLI::AppFormatMode mode) const override;
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
};

}  // namespace kaz::ctl
