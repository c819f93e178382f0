#include "kazwifictl/input/help.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

namespace {

using Rows = std::vector<std::pair<std::string_view, std::string_view>>;

const Rows commandRows{
    {"status", "state and connection"},
    {"on, off", "switch Wi-Fi on/off"},
    {"list", "list networks in range"},
    {"scan", "scan, then list"},
    {"connect SSID", "connect; asks for a password"},
    {"disconnect", "end the connection"},
    {"forget SSID", "delete a saved network"},
    {"monitor", "show every change"},
    {"doctor", "find what is wrong"},
    {"wait", "wait for a state"},
    {"report FILE", "file for a bug report"},
    {"country", "radio rules"},
};

const Rows optionRows{
    {"--json", "results as JSON"},
    {"--color auto|always|never", ""},
    {"--simulate[=FILE]", "use a simulated device"},
    {"-v, --verbose", "log to stderr"},
    {"--start-wait SECONDS", "wait for Wi-Fi (5)"},
    {"--version, -h, --help", ""},
};

// Two rows on a line if the terminal has room for them.
std::string rowsText(const Rows& rows, std::size_t name, std::size_t text, std::size_t secondName) {
    constexpr int roomForTwo = 80;
    const int columns = terminalAt(STDOUT_FILENO, ColourChoice::never).columns;
    const bool two = columns == 0 || columns >= roomForTwo;
    std::string result;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& [left, right] = rows[i];
        const bool first = !two || i % 2 == 0;
        std::string cell = right.empty() ? std::string(left)
                                         : fmt::format("{:<{}}{}", left, first ? name : secondName, right);
        result += first ? "  " : "";
        result += two && first ? fmt::format("{:<{}}", cell, name + text) : cell + '\n';
    }
    return result;
}

std::string commandsText() {
    return rowsText(commandRows, 16, 30, 12);
}

}  // namespace

std::string helpText() {
    return fmt::format(R"(usage: kazwifictl [OPTION...] [COMMAND [ARGUMENT...]]

{}Without a command, a prompt reads commands. See also help COMMAND.

{}
Examples:
    kazwifictl list
    kazwifictl connect "My Home"
    pass show wifi/work | kazwifictl connect Work --password-file -
    kazwifictl connect Campus --identity me@example.org --eap PEAP --wait 60
    kazwifictl monitor --json | jq .
    kazwifictl --simulate

Exit status: 0 success, 1 failure, 2 invalid command line, 3 timeout,
4 no Wi-Fi, 5 network not found, 6 invalid settings. See kazwifictl(1).
)",
                       commandsText(), rowsText(optionRows, 22, 24, 15));
}

std::string promptHelpText() {
    return fmt::format(
        R"({}{}Tab completes commands and SSIDs.
)",
        commandsText(),
        rowsText({{"help [COMMAND]", "show this, or all options"}, {"quit", "end (or Ctrl-D)"}}, 16, 30, 12));
}

std::string HelpLayout::make_help(const CLI::App* command, std::string name, CLI::AppFormatMode mode) const {
    std::string positionals;
    for (const CLI::Option* option : command->get_options()) {
        if (option->get_positional()) {
            positionals += ' ' + make_option_usage(option);
        }
    }
    const std::string examples = command->get_footer();
    return fmt::format("{}\nUsage: {} [OPTIONS]{}\n{}{}{}", command->get_description(), name, positionals,
                       make_positionals(command), make_groups(command, mode),
                       examples.empty() ? "" : examples + '\n');
}

std::string HelpLayout::make_option(const CLI::Option* option, bool isPositional) const {
    const std::string names = "  " + make_option_name(option, isPositional) + make_option_opts(option);
    return fmt::format("{:<{}}{}\n", names, get_column_width(), make_option_desc(option));
}

}  // namespace kaz::ctl
