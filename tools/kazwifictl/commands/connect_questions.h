#pragma once

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <string>

#include "kazwifictl/input/options.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/process/caught_signals.h"

namespace kaz::ctl {

// Finds out what neither the options nor the list of networks tell: from a file, from the standard input, or from the
// user when that is a terminal. The operations throw CommandFailed and Interrupted.
class ConnectQuestions {
  public:
    ConnectQuestions(const ConnectOptions& options, Output& output, Interrupts& interrupts);

    // Whether the user can be asked.
    static bool canAsk();

    // `name` is the SSID as it is shown, `what` the beginning of an error text. Fails unless the options or the user allow to replace the saved settings. `plainCommand` uses the saved ones.
    void confirmReplacing(const std::string& what, const std::string& name, const std::string& plainCommand);

    // Fills in the identity and the password where the network needs them.
    void complete(const std::string& name, wifi::ConnectionSettings& settings,
                  wifi::Certificates& certificates);

    // Whether a wrong password can be typed again.
    bool canAskAgain() const { return !options_.passwordFile && canAsk(); }

    // Asks for another password. False when the user gives up.
    bool askAgain(const std::string& question, std::string& password);

  private:
    std::string ask(const std::string& question, bool secret);

    const ConnectOptions& options_;
    Output& output_;
    Interrupts& interrupts_;
};

}  // namespace kaz::ctl
