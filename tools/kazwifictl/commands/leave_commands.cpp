#include <fmt/format.h>

#include <algorithm>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {

using std::chrono::milliseconds;
using wifi::ConnectionInfo;
using wifi::WifiNetwork;

namespace {

// How long to wait for the effect of a request. An effect usually appears at once, or not at all.
constexpr milliseconds promptly{2000};

bool isDisconnected(const Snapshot& view) {
    return view.connection.status == ConnectionInfo::Status::disconnected;
}

bool isInUse(const Snapshot& view, const std::string& ssid) {
    return !isDisconnected(view) && view.connection.ssid == ssid;
}

const WifiNetwork* find(const Snapshot& view, const std::string& ssid) {
    const auto found = std::find_if(view.networks.begin(), view.networks.end(),
                                    [&](const WifiNetwork& network) { return network.ssid == ssid; });
    return found == view.networks.end() ? nullptr : &*found;
}

bool isListedAsSaved(const Snapshot& view, const std::string& ssid) {
    const WifiNetwork* network = find(view, ssid);
    return network != nullptr && network->configured;
}

Failure notSaved(const std::string& what) {
    return {ExitCode::notFound, what, "no network with this name is saved", "kazwifictl list --saved"};
}

// Whether the effect of a request appears in time. If not, fenceAndFinish() proves that the request has run.
bool shows(Session& session, const Session::Condition& effect) {
    const auto wake = session.until(Clock::now() + promptly, effect);
    if (wake == Session::Wake::interrupted) {
        throw Interrupted(*session.signal());
    }
    return wake == Session::Wake::change;
}

// Waits until the connection has ended and the request has run. `requested` is the time of the request.
bool leave(Session& session, Workspace& place, Clock::time_point requested) {
    shows(session, [requested](const Snapshot& view) {
        return isDisconnected(view) && view.connection.disconnectTime >= requested;
    });
    return place.fenceAndFinish();
}

bool forgetListed(Session& session, Workspace& place, const std::string& ssid) {
    const bool done = shows(session, [&](const Snapshot& view) {
        const WifiNetwork* network = find(view, ssid);
        return network != nullptr && !network->configured;
    });
    if (!done) {
        return place.fenceAndFinish();
    }
    place.finish();  // the pass that published the change also saves
    return true;
}

Failure notSavedAnyLonger(const std::string& name) {
    return {ExitCode::failed, name + " is forgotten, but only until wpa_supplicant restarts",
            "wpa_supplicant did not write its configuration", "update_config=1 in wpa_supplicant.conf"};
}

void checkForgettable(const std::string& ssid, const std::string& what) {
    if (ssid.empty() || ssid.size() > 32) {
        throw CommandFailed({ExitCode::refused, what,
                             ssid.empty() ? "the SSID is empty" : "the SSID is longer than 32 bytes",
                             "a name of 1 to 32 bytes"});
    }
}

Report forgotten(const std::string& ssid, const std::string& name, bool known) {
    return {known ? fmt::format("Forgot {}.\n", name)
                  : fmt::format("Requested to forget {}; not confirmed yet.\n", name),
            ssidMembers(ssid), std::nullopt};
}

}  // namespace

Report disconnectFrom(const Options& /*options*/, Workspace& place, Output& output) {
    const std::string what = "cannot disconnect";
    const Snapshot before = place.look(what, Workspace::Need::stack);
    if (isDisconnected(before)) {
        return {"Already disconnected.\n",
                {{"changed", false}, {"ssid", nullptr}, {"ssid_hex", nullptr}},
                std::nullopt};
    }
    Session& session = place.act(what, Workspace::Need::stack);
    const auto requested = Clock::now();
    session.manager().disconnect();
    leave(session, place, requested);
    Json members{{"changed", true}};
    members.update(ssidMembers(before.connection.ssid));
    return {fmt::format("Disconnected from {}.\n", quoted(before.connection.ssid, output.terminal().utf8)),
            members, std::nullopt};
}

Report forgetNetwork(const Options& options, Workspace& place, Output& output) {
    const std::string& ssid = options.ssid;
    const std::string name = quoted(ssid, output.terminal().utf8);
    const std::string what = "cannot forget " + name;
    checkForgettable(ssid, what);
    const Snapshot before = place.look(what, Workspace::Need::stack);
    const bool inUse = isInUse(before, ssid);
    const bool listed = find(before, ssid) != nullptr;
    if (listed && !inUse && !isListedAsSaved(before, ssid)) {
        throw CommandFailed(notSaved(what));
    }
    Session& session = place.act(what, Workspace::Need::stack);
    place.log().forgetHints();
    const auto requested = Clock::now();
    session.manager().forgetNetwork(ssid);
    const bool known = inUse    ? leave(session, place, requested)
                       : listed ? forgetListed(session, place, ssid)
                                : place.fenceAndFinish();
    const LibraryLog::Hints hints = place.log().hints();
    if (hints.nothingForgotten) {
        throw CommandFailed(notSaved(what));
    }
    if (isListedAsSaved(session.latest(), ssid)) {
        throw CommandFailed(
            {ExitCode::failed, what, "wpa_supplicant did not remove it", "kazwifictl --verbose forget"});
    }
    Report report = forgotten(ssid, name, known);
    if (hints.saveFailed) {
        report.failure = notSavedAnyLonger(name);
    }
    return report;
}

}  // namespace kaz::ctl
