#include "kazwifictl/commands/connect_advice.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/text_of.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectResult;
using wifi::SecurityMode;

std::string sameCommand(const std::string& ssid, const ConnectOptions& options) {
    std::string command = "kazwifictl connect";
    const auto add = [&command](const char* option, const std::string& value) {
        command += value.empty() ? "" : fmt::format(" {} {}", option, shellArgument(value, true));
    };
    command += options.hidden ? " --hidden" : "";
    add("--security", options.security ? std::string(securityName(*options.security)) : std::string());
    add("--eap", options.eapMethod);
    add("--phase2", options.phase2Method);
    add("--ca-file", options.caFile);
    add("--domain", options.domain);
    add("--client-cert", options.clientCert);
    add("--private-key", options.privateKey);
    return command + ' ' + shellArgument(ssid, true);
}

std::string adviceFor(ConnectResult verdict, SecurityMode mode, const ConnectOptions& options,
                      const wifi::Manager& manager) {
    const std::string_view length =
        mode == SecurityMode::sae ? "a password of 1 to 1024 bytes" : "a password of 8 to 63 bytes";
    if (verdict == ConnectResult::eapMethodUnsupported) {
        if (options.describesCertificates()) {
            return "--eap with one of PEAP, TLS, TTLS";
        }
        const auto methods = manager.eapMethods();
        return methods.empty() ? "without --eap"
                               : fmt::format("--eap with one of {}", fmt::join(methods, ", "));
    }
    if (verdict == ConnectResult::phase2MethodUnsupported) {
        return fmt::format("--phase2 with one of {}", fmt::join(manager.phase2Methods(), ", "));
    }
    return std::string(
        textOf(verdict,
               {{ConnectResult::notSendable, "another name or password"},
                {ConnectResult::fileInvalid, "another path"},
                {ConnectResult::passwordTooShort, length},
                {ConnectResult::passwordTooLong, length},
                {ConnectResult::caFileMissing, "--ca-file FILE"},
                {ConnectResult::serverDomainInvalid, "--domain with a name such as example.org"},
                {ConnectResult::keyFileMissing, "--private-key FILE"},
                {ConnectResult::wepKeyInvalidLength, "the key as text, not in hexadecimal digits"},
                {ConnectResult::securityModeUnsupported,
                 "--security wpa3 if the network uses WPA3 with a password"}},
               ""));
}

// One network may have access points of several kinds, and the list shows that of one of them.
bool mayFit(SecurityMode announced, SecurityMode wanted) {
    const auto isPersonal = [](SecurityMode mode) {
        return mode == SecurityMode::wpaPsk || mode == SecurityMode::rsnPsk || mode == SecurityMode::sae;
    };
    return announced == wanted || announced == SecurityMode::unsupported ||
           (isPersonal(announced) && isPersonal(wanted)) || (isEnterprise(announced) && isEnterprise(wanted));
}

}  // namespace kaz::ctl
