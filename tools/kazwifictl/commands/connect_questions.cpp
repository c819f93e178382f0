#include "kazwifictl/commands/connect_questions.h"

#include <fmt/format.h>
#include <unistd.h>

#include "base/wipe.h"
#include "kazwifictl/input/secret.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/words.h"
#include "kazwifictl/text/wrapping.h"

namespace kaz::ctl {

ConnectQuestions::ConnectQuestions(const ConnectOptions& options, Output& output, Interrupts& interrupts)
    : options_(options), output_(output), interrupts_(interrupts) {}

bool ConnectQuestions::canAsk() {
    return ::isatty(STDIN_FILENO) == 1;
}

// A question bypasses the output, so the progress line is erased first.
std::string ConnectQuestions::ask(const std::string& question, bool secret) {
    output_.sayForNow({});
    const std::string text = fitted(question, output_.terminal().columns);
    return secret ? askSecret(text, interrupts_) : askLine(text, interrupts_);
}

void ConnectQuestions::confirmReplacing(const std::string& what, const std::string& name,
                                        const std::string& plainCommand) {
    if (options_.replace) {
        return;
    }
    if (!canAsk()) {
        throw CommandFailed({ExitCode::usage, what,
                             "it is saved, and new settings delete the saved ones even if they do not work "
                             "(--replace allows it)",
                             plainCommand});
    }
    output_.sayForNow({});
    const std::string question = fmt::format(
        "{} is saved. New settings delete the saved ones, even if they do not work.\nReplace the saved "
        "settings?",
        name);
    if (!askYes(fitted(question, output_.terminal().columns), interrupts_)) {
        throw CommandFailed({ExitCode::failed, what, "the saved settings are kept", plainCommand});
    }
}

void ConnectQuestions::complete(const std::string& name, wifi::ConnectionSettings& settings,
                                wifi::Certificates& certificates) {
    if (isEnterprise(settings.securityMode) && settings.identity.empty()) {
        settings.identity = ask(fmt::format("Identity for {}: ", name), false);
    }
    if (!takesPassword(settings.securityMode)) {
        return;
    }
    const bool ofKey = !certificates.keyFile.empty();
    std::string& password = ofKey ? certificates.keyPassword : settings.password;
    if (options_.passwordFile) {
        password = readSecret(*options_.passwordFile, interrupts_);
    } else if (canAsk()) {
        password = ask(ofKey ? "Password of the private key, empty if it has none: "
                             : fmt::format("Password for {}: ", name),
                       true);
    } else {
        password = readSecret("-", interrupts_);
    }
}

bool ConnectQuestions::askAgain(const std::string& question, std::string& password) {
    wipe(password);
    password = ask(question, true);
    return !password.empty();
}

}  // namespace kaz::ctl
