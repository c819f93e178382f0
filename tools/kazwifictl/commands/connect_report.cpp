#include "kazwifictl/commands/connect_report.h"

#include <fmt/format.h>
#include <wifi/client/words.h>

#include <array>
#include <utility>

#include "kazwifictl/commands/radio_block.h"
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

// Whether an access point took part in the attempt.
bool wasTried(const wifi::Outcome& failure) {
    return failure.stage >= wifi::Stage::authenticating;
}

std::string_view outcomeName(const Attempt& attempt) {
    if (attempt.outcome() == Outcome::failed) {
        return wasTried(attempt.failure()) ? "refused" : "not-answering";
    }
    return textOf(attempt.outcome(), {{std::nullopt, "timed-out"},
                                      {Outcome::connected, "connected"},
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
    if (facts.announced) {
        return {ExitCode::timedOut, facts.what,
                fmt::format("no connection after {:g} s; the network announces {}, not {}", waited,
                            securityInWords(*facts.announced), securityInWords(facts.security)),
                "kazwifictl connect " + shellArgument(facts.ssid, true)};
    }
    return {ExitCode::timedOut, facts.what, fmt::format("no connection after {:g} s", waited),
            "moving nearer to the access point, or a longer --wait"};
}

// What the library found out.
Failure explained(const Attempt& attempt, const ConnectFacts& facts) {
    const wifi::client::Words words;
    const wifi::Outcome& failure = attempt.failure();
    if (const auto block = failure.cause == wifi::Cause::radioBlocked ? radioBlock() : std::nullopt) {
        return block->failure(facts.what);
    }
    std::string advice = words.advice(failure);
    if (failure.cause == wifi::Cause::wrongKey || failure.cause == wifi::Cause::eapRejected) {
        advice = facts.saved ? fmt::format("kazwifictl connect --replace {}", shellArgument(facts.ssid, true))
                             : facts.again;
    }
    return {ExitCode::failed, facts.what, words.cause(failure), advice};
}

Failure notAnswering(const Attempt& attempt, const ConnectFacts& facts) {
    if (facts.saved && !facts.inRange) {
        return {ExitCode::notFound, facts.what,
                "it is not in range, and no saved network with this name answers",
                facts.similar ? "kazwifictl connect " + shellArgument(*facts.similar, true)
                              : "kazwifictl list, or --hidden and --security if it is hidden"};
    }
    return explained(attempt, facts);
}

Failure failureOf(const Attempt& attempt, const ConnectFacts& facts, bool utf8) {
    const auto outcome = attempt.outcome();
    if (!outcome) {
        return timedOut(attempt, facts);
    }
    switch (*outcome) {
        case Outcome::connected:
            break;
        case Outcome::failed:
            return wasTried(attempt.failure()) ? explained(attempt, facts) : notAnswering(attempt, facts);
        case Outcome::lost:
            return {ExitCode::failed, facts.what,
                    "the radio link broke before the device got an address: " +
                        wifi::client::Words().cause(attempt.failure()),
                    wifi::client::Words().advice(attempt.failure())};
        case Outcome::other:
            if (facts.saved && !facts.inRange) {
                return notAnswering(attempt, facts);
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
        // A supplicant that does not find the network searches again and again.
        const bool again = stage.kind == Stage::Kind::search && std::exchange(searched_, true);
        if (!again) {
            output_.say(
                fmt::format("  {:<15} {:>5.1f} s\n", textsOf(stage.kind).done, inSeconds(stage.took)));
        }
        current_.reset();
    }
    if (attempt.current() != current_) {
        current_ = attempt.current();
        output_.sayForNow(current_ ? "  " + std::string(textsOf(*current_).doing) : std::string());
    }
}

std::string beginningOf(const ConnectFacts& facts, wifi::SecurityMode mode, const Output& output) {
    const std::string name = output.style().bold(facts.name);
    if (facts.waits) {
        return fmt::format("Waiting for {}: the device connects to it already\n", name);
    }
    if (facts.saved && !facts.inRange) {
        return fmt::format("Trying {}, which is not in range but may be saved\n", name);
    }
    return fmt::format("Connecting to {} ({})\n{}", name, facts.saved ? "saved" : securityInWords(mode),
                       serverRemark(facts.server));
}

std::string interruptedText(const ConnectFacts& facts, bool linkIsUp, bool keep) {
    if (linkIsUp) {
        return fmt::format("Interrupted; the radio link to {} stays up.\n", facts.name);
    }
    if (facts.waits) {
        return fmt::format("Interrupted; the device continues to connect to {}.\n", facts.name);
    }
    return fmt::format(
        "Cancelled; {} {}.\n", facts.name,
        facts.saved || keep ? "stays saved" : (facts.replaced ? "is no longer saved" : "is not saved"));
}

Report connectReport(const Attempt& attempt, const ConnectFacts& facts, const Output& output) {
    Report report;
    report.members = ssidMembers(facts.ssid);
    report.members["outcome"] = outcomeName(attempt);
    const bool explained = attempt.failure().cause != wifi::Cause::none;
    report.members["cause"] = explained ? Json(causeName(attempt.failure().cause)) : Json();
    report.members["certainty"] = explained ? Json(certaintyName(attempt.failure().certainty)) : Json();
    const bool unknown = facts.saved && !facts.inRange && attempt.outcome() != Outcome::connected;
    report.members["saved"] = unknown ? Json() : Json(facts.kept && !facts.saveFailed);
    report.members["signal_dbm"] = attempt.signal() ? Json(*attempt.signal()) : Json();
    report.members["ms"] = inMilliseconds(attempt.total());
    report.members["server"] = facts.server ? Json(serverTrustName(*facts.server)) : Json();
    report.members["stages"] = stagesJson(attempt.stages());
    const bool connected = attempt.outcome() == Outcome::connected;
    if (connected) {
        report.text = successText(attempt, facts, output);
    }
    if (!connected || facts.saveFailed) {
        report.failure = failureOf(attempt, facts, output.terminal().utf8);
    }
    if (!facts.kept) {
        report.text += fmt::format("{} is {} saved.\n", facts.name, facts.replaced ? "no longer" : "not");
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
