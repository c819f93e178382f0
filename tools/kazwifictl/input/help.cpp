#include "kazwifictl/input/help.h"

#include <fmt/format.h>

namespace kaz::ctl {

namespace {

constexpr std::string_view commandsText =
    R"(  status          state and connection          on, off     switch Wi-Fi on/off
  list            list networks in range        scan        scan, then list
  connect SSID    connect; asks for a password  disconnect  end the connection
  forget SSID     delete a saved network        monitor     show every change
  doctor, report FILE  find what is wrong       wait        wait for a state
)";

}  // namespace

std::string helpText() {
    return fmt::format(R"(usage: kazwifictl [OPTION...] [COMMAND [ARGUMENT...]]

{}Without a command, a prompt reads commands. See also help COMMAND.

  --json                results as JSON         --color auto|always|never
  --simulate[=FILE]     use a simulated device  -v, --verbose  log to stderr
  --start-wait SECONDS  wait for Wi-Fi (5)      --version, -h, --help

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
                       commandsText);
}

std::string promptHelpText() {
    return fmt::format(R"({}  help [COMMAND]  show this, or all options     quit        end (or Ctrl-D)
Tab completes commands and SSIDs.
)",
                       commandsText);
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
