#include "kazwifictl/help.h"

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

}  // namespace kaz::ctl
