#include "kazwifictl/commands/byte_name.h"

#include <utility>
#include <variant>

#include "base/sendable_text.h"
#include "base/wipe.h"
#include "kazwifictl/session/session.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/words.h"
#include "requests/new_network.h"

namespace kaz::ctl {

using wifi::SecurityMode;

bool isByteName(const std::string& ssid) {
    return !isSendableText(ssid);
}

wifi::ConnectResult validateByteName(wifi::ConnectionSettings& settings, wifi::Manager& manager) {
    const std::string name = std::exchange(settings.ssid, "name");
    const wifi::ConnectResult verdict = manager.validate(settings, {});
    settings.ssid = name;
    return verdict;
}

void addByteName(const wifi::ConnectionSettings& settings, const std::string& what) {
    if (isEnterprise(settings.securityMode)) {
        throw CommandFailed(
            {ExitCode::failed, what,
             "its name is not text, and only open and personal networks can have such a name here",
             "wpa_cli"});
    }
    // As the library does, but with the name as bytes.
    requests::NewNetwork network{settings.ssid, {}};
    network.fields.reserve(4);  // so that no password is moved, which would leave a copy
    constexpr int protectionOptional = 1;
    constexpr int protectionRequired = 2;
    if (settings.hidden) {
        network.fields.emplace_back("scan_ssid", 1);
    }
    if (settings.securityMode == SecurityMode::sae) {
        network.fields.emplace_back("key_mgmt", "SAE");
        network.fields.emplace_back("sae_password", settings.password);
        network.fields.emplace_back("ieee80211w", protectionRequired);
    } else if (settings.securityMode == SecurityMode::none) {
        network.fields.emplace_back("key_mgmt", "NONE");
        network.fields.emplace_back("auth_alg", "OPEN");
    } else if (settings.securityMode == SecurityMode::wep) {
        network.fields.emplace_back("key_mgmt", "NONE");
        network.fields.emplace_back("wep_key0", settings.password);
    } else {
        network.fields.emplace_back("key_mgmt", "WPA-PSK");
        network.fields.emplace_back("psk", settings.password);
        network.fields.emplace_back("ieee80211w", protectionOptional);
    }
    const requests::Change change = requests::addNetwork(network, Session::requestLimit);
    for (auto& [field, value] : network.fields) {
        if (auto* text = std::get_if<std::string>(&value)) {
            wipe(*text);
        }
    }
    if (!change.done) {
        throw CommandFailed({ExitCode::failed, what, change.trouble, "kazwifictl doctor"});
    }
}

}  // namespace kaz::ctl
