#include <fmt/format.h>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {

using std::chrono::milliseconds;
using wifi::WifiNetwork;

namespace {

// How long to wait for the effect of a request. An effect usually appears at once, or not at all.
constexpr milliseconds promptly{2000};

bool isListedAsSaved(const Snapshot& view, const std::string& ssid) {
    const WifiNetwork* network = view.find(ssid);
    return network != nullptr && network->configured;
}

Failure notSaved(const std::string& what) {
    return {ExitCode::notFound, what, "no network with this name is saved", "kazwifictl list --saved"};
}

// Waits until the connection has ended and the request has run. `requested` is the time of the request. The fence
// proves that the request has run if its effect does not appear.
bool leave(Session& session, Workspace& place, Clock::time_point requested) {
    session.until(Clock::now() + promptly, [requested](const Snapshot& view) {
        return view.isDisconnected() && view.connection.disconnectTime >= requested;
    });
    return place.fenceAndFinish();
}

bool forgetListed(Session& session, Workspace& place, const std::string& ssid) {
    const bool done = session.until(Clock::now() + promptly, [&](const Snapshot& view) {
        return view.find(ssid) != nullptr && !isListedAsSaved(view, ssid);
    });
    if (!done) {
        return place.fenceAndFinish();
    }
    place.finish();  // the pass that published the change also saves
    return true;
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
    checkSsid(ssid, what);
    const Snapshot before = place.look(what, Workspace::Need::stack);
    const bool inUse = before.isInUse(ssid);
    const bool listed = before.find(ssid) != nullptr;
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
    Report report{known ? fmt::format("Forgot {}.\n", name)
                        : fmt::format("Requested to forget {}; not confirmed yet.\n", name),
                  ssidMembers(ssid), std::nullopt};
    if (hints.saveFailed) {
        report.failure = notWritten(name + " is forgotten, but only until wpa_supplicant restarts");
    }
    return report;
}

}  // namespace kaz::ctl
