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
std::optional<Failure> conflict(const ConnectOptions& options, SecurityMode mode) {
    if (isEnterprise(mode)) {
        if (options.identity.empty()) {
            return Failure{ExitCode::usage, {}, "an enterprise network needs an identity", "--identity NAME"};
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

// The caller sets `what` of a Failure.
ConnectPlan withSettings(const std::string& ssid, const ConnectOptions& options,
                         const std::optional<wifi::NetworkAccess>& access, bool looked) {
    const bool known = options.security || access;
    if (!known && options.hidden) {
        return Failure{ExitCode::usage,
                       {},
                       "the list does not show the security of a hidden network",
                       "--security WORD"};
    }
    if (!known) {
        return looked ? ConnectPlan(Failure{ExitCode::notFound,
                                            {},
                                            "no network with this name is in range",
                                            "kazwifictl list, or --hidden --security WORD"})
                      : LookFirst{};
    }
    if (!options.security) {
        if (const auto failure = obstacle(*access)) {
            return *failure;
        }
    }
    const SecurityMode mode = options.security ? *options.security : access->mode;
    if (const auto failure = conflict(options, mode)) {
        return *failure;
    }
    wifi::ConnectionSettings settings;
    settings.ssid = ssid;
    settings.securityMode = mode;
    settings.hidden = options.hidden;
    settings.identity = options.identity;
    settings.anonymousIdentity = options.anonymousIdentity;
    settings.eapMethod = options.eapMethod;
    settings.phase2Method = options.phase2Method;
    return UseSettings{settings, certificatesOf(options)};
}

}  // namespace

ConnectPlan planConnect(const std::string& ssid, const ConnectOptions& options, const Snapshot& view,
                        bool looked) {
    const WifiNetwork* network = view.find(ssid);
    const auto access = network == nullptr ? std::nullopt : std::optional(view.accessTo(*network));
    const bool current = view.isInUse(ssid);
    if (options.describesNetwork()) {
        if (current && !options.security) {
            return Failure{ExitCode::usage,
                           {},
                           "the list does not show the security of the network in use",
                           "--security WORD"};
        }
        return withSettings(ssid, options, access, looked);
    }
    if (current) {
        return view.connection.info.status == ConnectionInfo::Status::connected
                   ? ConnectPlan(AlreadyConnected{})
                   : UseSaved{true};
    }
    if (network != nullptr) {
        return network->configured ? UseSaved{true} : withSettings(ssid, options, access, looked);
    }
    // The network may be saved, and out of range or hidden. Only an attempt shows it.
    return looked ? ConnectPlan(UseSaved{false}) : LookFirst{};
}

}  // namespace kaz::ctl
