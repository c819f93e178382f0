#include "kazwifictl/commands/connect_report.h"

#include <fmt/format.h>

#include <array>

#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/text_of.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {
namespace {

struct StageTexts {
    std::string_view doing;
    std::string_view done;
    std::string_view name;
};

const StageTexts& textsOf(Stage::Kind kind) {
    static constexpr std::array<StageTexts, 3> texts{
        {// in the order of Stage::Kind
         {"searching...", "searched", "search"},
         {"joining...", "joined", "join"},
         {"getting an address...", "got an address", "address"}}};
    return texts.at(static_cast<std::size_t>(kind));
}

Json stagesJson(const std::vector<Stage>& stages) {
    Json json = Json::array();
    for (const Stage& stage : stages) {
        json.push_back({{"stage", textsOf(stage.kind).name}, {"ms", inMilliseconds(stage.took)}});
    }
    return json;
}

using Outcome = Attempt::Outcome;

// The library's log overrules what the timing suggests (see Attempt).
std::optional<Outcome> outcomeOf(const Attempt& attempt, const ConnectFacts& facts) {
    const auto outcome = attempt.outcome();
    if (outcome != Outcome::notAnswering && outcome != Outcome::refused) {
        return outcome;
    }
    const auto reason = facts.hints.disconnectReason;
    if (reason && causeFromReason(*reason)) {
        return Outcome::refused;
    }
    return facts.hints.gaveUp ? Outcome::notAnswering : outcome;
}

std::string_view outcomeName(std::optional<Outcome> outcome) {
    return textOf(outcome, {{std::nullopt, "timed-out"},
                            {Outcome::connected, "connected"},
                            {Outcome::notAnswering, "not-answering"},
                            {Outcome::refused, "refused"},
                            {Outcome::lost, "lost"},
                            {Outcome::other, "other-network"},
                            {Outcome::stopped, "stopped"}});
}

Failure timedOut(const Attempt& attempt, const ConnectFacts& facts) {
    const double waited = inSeconds(facts.wait);
    if (attempt.linkIsUp()) {
        return {ExitCode::timedOut, facts.what,
                fmt::format("the radio link is up, but there is no address after {:g} s", waited),
                "checking the DHCP server, or a longer --wait"};
    }
    return {ExitCode::timedOut, facts.what, fmt::format("no connection after {:g} s", waited),
            "moving nearer to the access point, or a longer --wait"};
}

Failure notAnswering(const ConnectFacts& facts) {
    if (validUtf8(facts.ssid) != facts.ssid || facts.ssid.find('\0') != std::string::npos) {
        return {ExitCode::failed, facts.what,
                "its name contains NUL or is not UTF-8, so it cannot be sent to wpa_supplicant",
                "renaming the network"};
    }
    if (facts.saved && !facts.inRange) {
        return {ExitCode::notFound, facts.what,
                "it is not in range, and no saved network with this name answers",
                "kazwifictl list, or --hidden --security WORD for a hidden one"};
    }
    return {ExitCode::failed, facts.what, "it does not answer", "moving nearer to the access point"};
}

Failure turnedAway(const ConnectFacts& facts) {
    std::string why(facts.saved ? "the access point rejected this device; the saved password may be wrong"
                                : likelyCause(facts.security));
    if (facts.hints.disconnectReason) {
        why = causeFromReason(*facts.hints.disconnectReason).value_or(why);
    }
    const std::string argument = shellArgument(facts.ssid, true);
    return {ExitCode::failed, facts.what, "refused: " + why,
            facts.saved ? fmt::format("kazwifictl forget {0}, then kazwifictl connect {0}", argument)
                        : fmt::format("kazwifictl connect {}", argument)};
}

Failure failureOf(const Attempt& attempt, const ConnectFacts& facts, bool utf8) {
    const auto outcome = outcomeOf(attempt, facts);
    if (!outcome) {
        return timedOut(attempt, facts);
    }
    switch (*outcome) {
        case Outcome::connected:
            break;
        case Outcome::refused:
            return turnedAway(facts);
        case Outcome::notAnswering:
            return notAnswering(facts);
        case Outcome::lost:
            return {ExitCode::failed, facts.what, "the radio link broke before the device got an address",
                    "moving nearer to the access point"};
        case Outcome::other:
            if (facts.saved && !facts.inRange) {
                return notAnswering(facts);
            }
            return {ExitCode::failed, facts.what,
                    fmt::format("the device is connected to {} instead", quoted(attempt.otherSsid(), utf8)),
                    "the command again"};
        case Outcome::stopped:
            return {ExitCode::noStack, facts.what, "wpa_supplicant stopped during the command",
                    "kazwifictl on"};
    }
    return notWritten(facts.name + " is connected, but not saved");
}

std::string successText(const Attempt& attempt, const ConnectFacts& facts, const Output& output) {
    return fmt::format(
        "{} to {}{}, after {:.1f} s.\n", output.style().good("Connected"), output.style().bold(facts.name),
        attempt.signal() ? ", " + output.signal(*attempt.signal()) : "", inSeconds(attempt.total()));
}

}  // namespace

void StageLines::show(const Attempt& attempt) {
    for (; shown_ < attempt.stages().size(); ++shown_) {
        const Stage& stage = attempt.stages().at(shown_);
        output_.say(fmt::format("  {:<15} {:>5.1f} s\n", textsOf(stage.kind).done, inSeconds(stage.took)));
        current_.reset();
    }
    if (attempt.current() != current_) {
        current_ = attempt.current();
        output_.sayForNow(current_ ? "  " + std::string(textsOf(*current_).doing) : std::string());
    }
}

Report connectReport(const Attempt& attempt, const ConnectFacts& facts, const Output& output) {
    Report report;
    report.members = ssidMembers(facts.ssid);
    report.members["outcome"] = outcomeName(outcomeOf(attempt, facts));
    const bool unknown = facts.saved && !facts.inRange && attempt.outcome() != Outcome::connected;
    report.members["saved"] = unknown ? Json() : Json(facts.kept && !facts.hints.saveFailed);
    report.members["signal_dbm"] = attempt.signal() ? Json(*attempt.signal()) : Json();
    report.members["ms"] = inMilliseconds(attempt.total());
    report.members["stages"] = stagesJson(attempt.stages());
    const bool connected = attempt.outcome() == Outcome::connected;
    if (connected) {
        report.text = successText(attempt, facts, output);
    }
    if (!connected || facts.hints.saveFailed) {
        report.failure = failureOf(attempt, facts, output.terminal().utf8);
    }
    if (!facts.kept) {
        report.text += fmt::format("{} is not saved.\n", facts.name);
    }
    return report;
}

Report startedReport(const ConnectFacts& facts) {
    Json members = ssidMembers(facts.ssid);
    members["outcome"] = "started";
    return {fmt::format("Connecting to {} continues in the background; kazwifictl status shows it.\n",
                        facts.name),
            members, std::nullopt};
}

}  // namespace kaz::ctl
