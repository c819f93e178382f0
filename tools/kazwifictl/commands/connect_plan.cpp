#include "kazwifictl/commands/connect_plan.h"

#include <fmt/format.h>
#include <wifi/client/words.h>

#include <filesystem>
#include <optional>
#include <system_error>

#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;
using wifi::SecurityMode;
using wifi::WifiNetwork;

namespace {

// The supplicant opens the files, in another folder.
std::string absolutePath(const std::string& path) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error);
    return path.empty() || error ? path : absolute.string();
}

wifi::Certificates certificatesOf(const ConnectOptions& options) {
    return {absolutePath(options.caFile),
            options.domain,
            absolutePath(options.clientCert),
            absolutePath(options.privateKey),
            {}};
}

// Why these options do not go together. Without certificates, an open network of the same name would be joined.
std::optional<Failure> conflict(const ConnectOptions& options, SecurityMode mode, bool asks) {
    if (isEnterprise(mode)) {
        if (options.identity.empty() && !asks) {
            return Failure{ExitCode::usage,
                           {},
                           "an enterprise network needs an identity",
                           "--identity with your name in this network"};
        }
        if (!options.privateKey.empty() && !options.eapMethod.empty() && options.eapMethod != "TLS") {
            return Failure{ExitCode::usage, {}, "a private key is for the EAP method TLS", "without --eap"};
        }
    } else if (options.describesCertificates()) {
        return Failure{
            ExitCode::usage, {}, "only an enterprise network uses certificates", "--security enterprise"};
    }
    return std::nullopt;
}

// Why this device cannot join a network in range.
std::optional<Failure> obstacle(const wifi::NetworkAccess& access) {
    if (obstacleName(access).empty()) {
        return std::nullopt;
    }
    return Failure{ExitCode::refused,
                   {},
                   fmt::format("it asks for {}, which this device lacks", securityInWords(access)),
                   wifi::client::Words().advice(access)};
}

// What protects the network, as far as anything tells.
std::optional<SecurityMode> securityOf(const std::string& ssid, const ConnectOptions& options,
                                       const Snapshot& view) {
    if (options.security) {
        return options.security;
    }
    if (const WifiNetwork* network = view.find(ssid)) {
        return view.accessTo(*network).mode;
    }
    return view.isInUse(ssid) && isKnown(view.connection.network)
               ? std::optional(view.connection.network.securityMode)
               : std::nullopt;
}

// Without the security: a scan may tell it.
ConnectPlan withoutSecurity(const std::string& ssid, const ConnectOptions& options, const Snapshot& view,
                            bool looked) {
    if (options.hidden) {
        return Failure{ExitCode::usage,
                       {},
                       "the list does not show the security of a hidden network",
                       "--security with one of " + securityNames()};
    }
    if (view.isInUse(ssid)) {
        return Failure{ExitCode::usage,
                       {},
                       "the security of the network in use is not known yet",
                       "--security with one of " + securityNames()};
    }
    if (!looked) {
        return LookFirst{};
    }
    return Failure{ExitCode::notFound,
                   {},
                   "no network with this name is in range",
                   "kazwifictl list, or --hidden and --security if it is hidden"};
}

// The caller sets `what` of a Failure.
ConnectPlan withSettings(const std::string& ssid, const ConnectOptions& options, const Snapshot& view,
                         bool looked, bool asks) {
    const auto mode = securityOf(ssid, options, view);
    if (!mode) {
        return withoutSecurity(ssid, options, view, looked);
    }
    const WifiNetwork* network = view.find(ssid);
    if (network != nullptr && !options.security) {
        if (const auto failure = obstacle(view.accessTo(*network))) {
            return *failure;
        }
    }
    if (const auto failure = conflict(options, *mode, asks)) {
        return *failure;
    }
    wifi::ConnectionSettings settings;
    settings.ssid = ssid;
    settings.securityMode = *mode;
    settings.hidden = options.hidden;
    settings.identity = options.identity;
    settings.anonymousIdentity = options.anonymousIdentity;
    settings.eapMethod = options.eapMethod;
    settings.phase2Method = options.phase2Method;
    return UseSettings{settings, certificatesOf(options),
                       view.isInUse(ssid) || (network != nullptr && network->configured)};
}

}  // namespace

ConnectPlan planConnect(const std::string& ssid, const ConnectOptions& options, const Snapshot& view,
                        bool looked, bool asks) {
    const WifiNetwork* network = view.find(ssid);
    if (options.describesNetwork()) {
        return withSettings(ssid, options, view, looked, asks);
    }
    if (view.isInUse(ssid)) {
        return view.connection.info.status == ConnectionInfo::Status::connected
                   ? ConnectPlan(AlreadyConnected{})
                   : AlreadyConnecting{};
    }
    if (network != nullptr) {
        return network->configured ? UseSaved{true} : withSettings(ssid, options, view, looked, asks);
    }
    // The network may be saved, and out of range or hidden. Only an attempt shows it.
    return looked ? ConnectPlan(UseSaved{false}) : LookFirst{};
}

}  // namespace kaz::ctl
