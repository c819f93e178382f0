#include "kazwifictl/input/help.h"

#include <fmt/format.h>

namespace kaz::ctl {

std::string helpText() {
    return R"(usage: kazwifictl [OPTION...] [COMMAND [ARGUMENT...]]

  status          what Wi-Fi is doing           on, off     switch Wi-Fi
  list            the networks in range         scan        look anew and list
  connect SSID    connect; asks for a password  disconnect  end the connection
  forget SSID     delete a saved network        monitor     show every change
Without a command: a prompt that takes all of these. COMMAND --help tells more.

  --json                results as JSON         --color auto|always|never
  --simulate[=FILE]     on a simulated device   -v, --verbose  log to stderr
  --start-wait SECONDS  for Wi-Fi to start (5)  --version, -h, --help

Examples:
  kazwifictl list
  kazwifictl connect "My Home"
  pass show wifi/work | kazwifictl connect Work --password-file -
  kazwifictl connect Campus --identity me@example.org --eap PEAP --wait 60
  kazwifictl monitor --json | jq .
  kazwifictl --simulate

Exit status: 0 done, 1 failed, 2 usage, 3 time-out, 4 no Wi-Fi, 5 not found,
6 settings refused. See kazwifictl(1).
)";
}

std::string promptHelpText() {
    return R"(  status          what Wi-Fi is doing           on, off     switch Wi-Fi
  list            the networks in range         scan        look anew and list
  connect SSID    connect; asks for a password  disconnect  end the connection
  forget SSID     delete a saved network        monitor     show every change
  help               this text                      quit      or Ctrl-D
COMMAND --help tells more. Tab completes commands and SSIDs.
)";
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
                       examples.empty() ? "" : '\n' + examples + '\n');
}

std::string HelpLayout::make_option(const CLI::Option* option, bool isPositional) const {
    const std::string names = "  " + make_option_name(option, isPositional) + make_option_opts(option);
    return fmt::format("{:<{}}{}\n", names, get_column_width(), make_option_desc(option));
}

}  // namespace kaz::ctl
