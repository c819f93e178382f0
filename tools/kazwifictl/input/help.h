#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace kaz::ctl {

// The text of --help. Fits a screen of 24 lines and 80 columns; on a narrower one each command has a line of its own.
std::string helpText();

// The text of `help` at the prompt.
std::string promptHelpText();

// The layout of a command's help: one option per line, the descriptions in one column, the examples unchanged.
// CLI11's own layout differs between its releases, and some of them do not fit a screen.
class HelpLayout : public CLI::Formatter {
  public:
    std::string make_help(const CLI::App* command, std::string name, CLI::AppFormatMode mode) const override;
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
};

}  // namespace kaz::ctl
