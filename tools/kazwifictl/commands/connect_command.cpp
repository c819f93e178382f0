#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <utility>

#include "base/non_copyable.h"
#include "base/wipe.h"
#include "kazwifictl/commands/attempt.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/commands/connect_plan.h"
#include "kazwifictl/commands/connect_report.h"
#include "kazwifictl/input/secret.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/text_of.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using std::chrono::milliseconds;
using wifi::ConnectResult;
using wifi::SecurityMode;

namespace {

// How long the library may take to start a request: the task in progress must end first.
constexpr milliseconds beginLimit{15000};
// How long to wait for the end of an attempt that was called off.
constexpr milliseconds callOffLimit{5000};

class ConnectCommand : NonCopyable {
  public:
    ConnectCommand(const Options& options, Workspace& place, Output& output)
        : options_(options), place_(place), output_(output) {
        facts_.ssid = options.ssid;
        facts_.name = quoted(options.ssid, output.terminal().utf8);
        facts_.what = "cannot connect to " + facts_.name;
        facts_.wait = options.connect.wait;
    }
    ~ConnectCommand() {
        wipe(settings_.password);
        wipe(certificates_.keyPassword);
    }

    Report run() {
        checkSsid(options_.ssid, facts_.what);
        ConnectPlan plan = this->plan();
        if (auto* failure = std::get_if<Failure>(&plan)) {
            failure->what = facts_.what;
            throw CommandFailed(*failure);
        }
        if (std::holds_alternative<AlreadyConnected>(plan)) {
            Json members = ssidMembers(options_.ssid);
            members["outcome"] = "already-connected";
            return {fmt::format("Already connected to {}.\n", facts_.name), members, std::nullopt};
        }
        if (auto* settings = std::get_if<UseSettings>(&plan)) {
            settings_ = std::move(settings->settings);
            certificates_ = std::move(settings->certificates);
            facts_.server = serverTrust(settings_.securityMode, certificates_);
            fetchPassword();
        } else if (const auto* saved = std::get_if<UseSaved>(&plan)) {
            facts_.saved = true;
            facts_.inRange = saved->inRange;
        }
        Session& session = place_.act(facts_.what, Workspace::Need::stack);
        place_.log().forgetHints();
        session.takeFailures();
        return follow(session);
    }

  private:
    ConnectPlan plan() {
        ConnectPlan plan = planConnect(options_.ssid, options_.connect,
                                       place_.look(facts_.what, Workspace::Need::stack), false);
        if (std::holds_alternative<LookFirst>(plan)) {
            plan =
                planConnect(options_.ssid, options_.connect, lookAround(facts_.what, place_, output_), true);
        }
        return plan;
    }

    void fetchPassword() {
        if (!takesPassword(settings_.securityMode)) {
            return;
        }
        const bool ofKey = !certificates_.keyFile.empty();
        std::string& password = ofKey ? certificates_.keyPassword : settings_.password;
        const auto& file = options_.connect.passwordFile;
        if (file) {
            password = readSecret(*file, place_.interrupts());
        } else if (::isatty(STDIN_FILENO) == 1) {
            output_.sayForNow({});  // erases the progress line, because the question bypasses output_
            password = askSecret(ofKey ? "Password of the private key, empty if it has none: "
                                       : fmt::format("Password for {}: ", facts_.name),
                                 place_.interrupts());
        } else {
            password = readSecret("-", place_.interrupts());
        }
    }

    void request(Session& session) {
        if (facts_.saved) {
            session.manager().connectConfigured(options_.ssid);
            return;
        }
        ConnectResult verdict = session.manager().validate(settings_, certificates_);
        if (verdict == ConnectResult::ok) {
            verdict = session.manager().connect(settings_, certificates_);
        }
        wipe(settings_.password);
        wipe(certificates_.keyPassword);
        if (verdict != ConnectResult::ok) {
            throw CommandFailed({ExitCode::refused, facts_.what,
                                 std::string(brokenRule(verdict, settings_.securityMode)),
                                 advice(verdict, session)});
        }
    }

    Report follow(Session& session) {
        Attempt attempt(options_.ssid, Clock::now());
        request(session);
        output_.say(beginning());
        try {
            return watch(session, attempt) ? end(session, attempt) : startedReport(facts_);
        } catch (const Interrupted&) {
            callOff(session);
            throw;
        }
    }

    std::string beginning() const {
        const std::string name = output_.style().bold(facts_.name);
        if (facts_.saved && !facts_.inRange) {
            return fmt::format("Trying {}, which is not in range but may be saved\n", name);
        }
        return fmt::format("Connecting to {} ({})\n{}", name,
                           facts_.saved ? "saved" : securityInWords(settings_.securityMode),
                           serverRemark(facts_.server));
    }

    // False when the command must return while the attempt continues.
    bool watch(Session& session, Attempt& attempt) {
        StageLines lines(output_);
        const auto observer = [&](const Snapshot& before, const Snapshot& now) {
            attempt.see(before, now);
            lines.show(attempt);
        };
        milliseconds limit = options_.connect.wait;
        if (limit == milliseconds::zero()) {
            await(
                session, beginLimit, [&](const Snapshot&) { return attempt.begun(); },
                {ExitCode::timedOut, facts_.what, "the library did not start the attempt",
                 "kazwifictl status"},
                observer);
            if (!place_.continueInBackground(
                    [&] { present(startedReport(facts_), options_.command, output_); })) {
                return false;
            }
            limit = ConnectOptions{}.wait;
        }
        session.until(
            Clock::now() + limit, [&](const Snapshot&) { return attempt.outcome().has_value(); }, observer);
        return true;
    }

    // callOff() also changes the connection. `attempt` does not see these changes, so they do not become its outcome.
    Report end(Session& session, const Attempt& attempt) {
        const bool linkWasUp = attempt.linkIsUp() || attempt.outcome() == Attempt::Outcome::lost;
        facts_.kept = linkWasUp || facts_.saved || options_.connect.keep;
        if (!attempt.outcome() && !linkWasUp) {
            callOff(session);
        } else {
            if (!facts_.kept) {
                session.manager().forgetNetwork(options_.ssid);
            }
            place_.carryOutAndFinish();
        }
        facts_.saveFailed = session.takeFailures().contains(wifi::RequestFailure::notSaved);
        facts_.security = settings_.securityMode;
        return connectReport(attempt, facts_, output_);
    }

    // Ends an attempt in progress. The library has disabled the other saved networks for the attempt, and it saves
    // nothing before the attempt ends. So the attempt must end, even when the user no longer waits for it.
    void callOff(Session& session) {
        if (facts_.saved || options_.connect.keep) {
            session.manager().disconnect();
        } else {
            session.manager().forgetNetwork(options_.ssid);
        }
        try {
            session.until(Clock::now() + callOffLimit,
                          [](const Snapshot& view) { return view.isDisconnected(); });
            place_.carryOutAndFinish();
        } catch (const Interrupted&) {  // an impatient user; the request must be carried out
            place_.carryOutAndFinish();
        }
    }

    // What to try instead of settings that break a rule.
    std::string advice(ConnectResult verdict, Session& session) const {
        const bool sae = settings_.securityMode == SecurityMode::sae;
        const std::string_view length = sae ? "a password of 1 to 1024 bytes" : "a password of 8 to 63 bytes";
        if (verdict == ConnectResult::eapMethodUnsupported) {
            if (options_.connect.describesCertificates()) {
                return "--eap with one of PEAP, TLS, TTLS";
            }
            const auto methods = session.manager().eapMethods();
            return methods.empty() ? "without --eap"
                                   : fmt::format("--eap with one of {}", fmt::join(methods, ", "));
        }
        if (verdict == ConnectResult::phase2MethodUnsupported) {
            return fmt::format("--phase2 with one of {}", fmt::join(session.manager().phase2Methods(), ", "));
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

    const Options& options_;
    Workspace& place_;
    Output& output_;
    ConnectFacts facts_;
    wifi::ConnectionSettings settings_;
    wifi::Certificates certificates_;
};

}  // namespace

Report connectTo(const Options& options, Workspace& place, Output& output) {
    return ConnectCommand(options, place, output).run();
}

}  // namespace kaz::ctl
