#include <algorithm>
#include <utility>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/commands/radio_block.h"
#include "kazwifictl/commands/saved_networks.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/network_table.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds scanStartLimit{5000};
constexpr milliseconds refusedScanLimit{1000};
constexpr milliseconds scanLimit{30000};

std::string namesText(const std::vector<NetworkRow>& rows) {
    std::string text;
    for (const NetworkRow& row : rows) {
        text += isPlain(row.ssid) ? row.ssid + '\n' : std::string();
    }
    return text;
}

// The saved networks, also those out of range if the supplicant tells them.
Report savedReport(std::vector<NetworkRow> rows, const Options& options, const Output& output) {
    const auto saved = savedSsids();
    std::erase_if(rows, [](const NetworkRow& row) { return !row.saved; });
    for (const std::string& ssid : saved.value_or(std::vector<std::string>())) {
        if (std::none_of(rows.begin(), rows.end(), [&](const NetworkRow& row) { return row.ssid == ssid; })) {
            NetworkRow row;
            row.ssid = ssid;
            row.saved = true;
            row.inRange = false;
            rows.push_back(std::move(row));
        }
    }
    const Json members{{"networks", networksJson(rows)}};
    if (options.namesOnly) {
        return {namesText(rows), members, std::nullopt};
    }
    const std::string none = saved ? "No network is saved.\n" : "No saved network is in range.\n";
    const std::string rest = saved ? "" : "wpa_supplicant does not tell whether others are saved.\n";
    return {(rows.empty() ? none : networkTable(rows, output.terminal())) + rest, members, std::nullopt};
}

Report listReport(const Snapshot& view, const Options& options, const Output& output) {
    std::vector<NetworkRow> rows =
        networkRows(view.networks, view.connection.info, view.access, view.connection.network);
    if (options.savedOnly) {
        return savedReport(std::move(rows), options, output);
    }
    return {options.namesOnly ? namesText(rows) : networkTable(rows, output.terminal()),
            {{"networks", networksJson(rows)}},
            std::nullopt};
}

Report scanAndList(const std::string& what, const Options& options, Workspace& place, Output& output) {
    const Snapshot view = lookAround(what, place, output);
    place.finish();
    return listReport(view, options, output);
}

// The supplicant also refuses a scan while it begins one by itself, which then shows soon.
void beginScan(const std::string& what, Session& session) {
    // The supplicant takes the request, and then does nothing.
    if (const auto block = radioBlock()) {
        throw CommandFailed(block->failure(what));
    }
    bool began = false;
    const auto note = [&began](const Snapshot& /*before*/, const Snapshot& now) {
        began = began || now.scanning;
    };
    session.takeFailures();
    session.manager().scan();
    session.carriedOut(scanStartLimit, note);
    const bool refused = session.takeFailures().contains(wifi::RequestFailure::refused);
    await(
        session, refused ? refusedScanLimit : scanStartLimit,
        [&began](const Snapshot& view) { return began || view.scanning; },
        refused ? Failure{ExitCode::failed, what, "wpa_supplicant refused to scan",
                          "kazwifictl doctor, or again when the device is not connecting"}
                : Failure{ExitCode::failed, what, "wpa_supplicant took the request, but does not scan",
                          "kazwifictl off, then kazwifictl on"});
}

}  // namespace

// A session receives the results of a scan some time after its end, or never if nothing has changed. But the
// supplicant has the results when it reports the end, so a new Manager reads them from it.
Snapshot lookAround(const std::string& what, Workspace& place, Output& output) {
    Session& session = place.act(what, Workspace::Need::stack);
    output.sayForNow("scanning...");
    if (!session.latest().scanning) {
        beginScan(what, session);
    }
    await(
        session, scanLimit, [](const Snapshot& view) { return !view.scanning; },
        {ExitCode::timedOut, what, "the scan did not end within 30 s", "kazwifictl off, then kazwifictl on"});
    if (!session.latest().running) {
        throw CommandFailed(
            {ExitCode::noStack, what, "wpa_supplicant stopped during the command", "kazwifictl on"});
    }
    return place.lookAfresh(what, Workspace::Need::stack);
}

Report listNetworks(const Options& options, Workspace& place, Output& output) {
    const std::string what = "cannot list the networks";
    const Snapshot view = place.look(what, Workspace::Need::stack);
    const bool nothingKnown = view.networks.empty() && view.isDisconnected();
    return nothingKnown && !options.namesOnly && !options.savedOnly
               ? scanAndList(what, options, place, output)
               : listReport(view, options, output);
}

Report scanNetworks(const Options& options, Workspace& place, Output& output) {
    return scanAndList("cannot scan", options, place, output);
}

}  // namespace kaz::ctl
