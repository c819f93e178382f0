#include <fmt/format.h>

#include <string>
#include <vector>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/commands/saved_networks.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/similar_name.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {

using wifi::WifiNetwork;

namespace {

bool isListedAsSaved(const Snapshot& view, const std::string& ssid) {
    const WifiNetwork* network = view.find(ssid);
    return network != nullptr && network->configured;
}

// The saved networks: all that the supplicant tells, or else those in range and in use.
std::vector<std::string> savedNames(const Snapshot& view) {
    std::vector<std::string> saved = view.names();
    std::erase_if(saved, [&view](const std::string& name) {
        return !view.isInUse(name) && !isListedAsSaved(view, name);
    });
    return savedSsids().value_or(saved);
}

Failure notSaved(const std::string& what, const std::string& ssid, const Snapshot& view) {
    const auto similar = similarName(ssid, savedNames(view));
    return {ExitCode::notFound, what, "no network with this name is saved",
            similar ? "kazwifictl forget " + shellArgument(*similar, true) : "kazwifictl list --saved"};
}

Report forgetAll(Workspace& place, Output& output) {
    const std::string what = "cannot forget the networks";
    const std::vector<std::string> names = savedNames(place.look(what, Workspace::Need::stack));
    Json networks = Json::array();
    std::string text = names.empty() ? "No network is saved.\n" : "";
    if (!names.empty()) {
        Session& session = place.act(what, Workspace::Need::stack);
        session.takeFailures();
        for (const std::string& ssid : names) {
            session.manager().forgetNetwork(ssid);
            networks.push_back(ssidMembers(ssid));
            text += fmt::format("Forgot {}.\n", quoted(ssid, output.terminal().utf8));
        }
        place.carryOutAndFinish();
        const Session::Failures failures = session.takeFailures();
        if (failures.contains(wifi::RequestFailure::refused)) {
            throw CommandFailed({ExitCode::failed, what, "wpa_supplicant did not remove all of them",
                                 "kazwifictl list --saved"});
        }
        if (failures.contains(wifi::RequestFailure::notSaved)) {
            return {text,
                    {{"networks", networks}},
                    notWritten("they are forgotten, but only until wpa_supplicant restarts")};
        }
    }
    return {text, {{"networks", networks}}, std::nullopt};
}

}  // namespace

Report disconnectFrom(const Options& /*options*/, Workspace& place, Output& output) {
    const std::string what = "cannot disconnect";
    const Snapshot before = place.look(what, Workspace::Need::stack);
    if (before.isDisconnected()) {
        return {"Already disconnected.\n",
                {{"changed", false}, {"ssid", nullptr}, {"ssid_hex", nullptr}},
                std::nullopt};
    }
    Session& session = place.act(what, Workspace::Need::stack);
    session.manager().disconnect();
    place.carryOutAndFinish();
    Json members{{"changed", true}};
    members.update(ssidMembers(before.connection.info.ssid));
    return {
        fmt::format("Disconnected from {}.\n", quoted(before.connection.info.ssid, output.terminal().utf8)),
        members, std::nullopt};
}

Report forgetNetwork(const Options& options, Workspace& place, Output& output) {
    if (options.all) {
        return forgetAll(place, output);
    }
    std::string ssid = options.ssid;
    std::string name = quoted(ssid, output.terminal().utf8);
    const std::string what = "cannot forget " + name;
    checkSsid(ssid, what);
    const Snapshot before = place.look(what, Workspace::Need::stack);
    if (const auto shown = nameShownAs(ssid, before.names());
        shown && !before.isInUse(ssid) && before.find(ssid) == nullptr) {
        ssid = *shown;
        name = quoted(ssid, output.terminal().utf8);
    }
    const bool inUse = before.isInUse(ssid);
    const bool listed = before.find(ssid) != nullptr;
    if (listed && !inUse && !isListedAsSaved(before, ssid)) {
        throw CommandFailed(notSaved(what, ssid, before));
    }
    Session& session = place.act(what, Workspace::Need::stack);
    session.takeFailures();
    session.manager().forgetNetwork(ssid);
    const bool known = place.carryOutAndFinish();
    const Session::Failures failures = session.takeFailures();
    if (failures.contains(wifi::RequestFailure::unknownNetwork)) {
        throw CommandFailed(notSaved(what, ssid, before));
    }
    if (isListedAsSaved(session.latest(), ssid)) {
        throw CommandFailed(
            {ExitCode::failed, what, "wpa_supplicant did not remove it", "kazwifictl --verbose forget"});
    }
    Report report{known ? fmt::format("Forgot {}.\n", name)
                        : fmt::format("Requested to forget {}; not confirmed yet.\n", name),
                  ssidMembers(ssid), std::nullopt};
    if (failures.contains(wifi::RequestFailure::notSaved)) {
        report.failure = notWritten(name + " is forgotten, but only until wpa_supplicant restarts");
    }
    return report;
}

}  // namespace kaz::ctl
