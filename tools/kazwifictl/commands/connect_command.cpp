#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/non_copyable.h"
#include "base/wipe.h"
#include "kazwifictl/commands/attempt.h"
#include "kazwifictl/commands/byte_name.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/commands/connect_advice.h"
#include "kazwifictl/commands/connect_plan.h"
#include "kazwifictl/commands/connect_questions.h"
#include "kazwifictl/commands/connect_report.h"
#include "kazwifictl/commands/radio_block.h"
#include "kazwifictl/commands/saved_networks.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/similar_name.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using std::chrono::milliseconds;
using wifi::ConnectResult;

namespace {

// How long the library may take to start a request: the task in progress must end first.
constexpr milliseconds beginLimit{15000};
// How long to wait for the end of an attempt that was called off.
constexpr milliseconds callOffLimit{5000};
// How often a wrong password may be typed.
constexpr int mostTries = 3;

class ConnectCommand : NonCopyable {
  public:
    ConnectCommand(const Options& options, Workspace& place, Output& output)
        : options_(options),
          place_(place),
          output_(output),
          ask_(options_.connect, output, place.interrupts()) {
        setName(options.ssid);
        facts_.wait = options.connect.wait;
    }
    ~ConnectCommand() { wipeSecrets(); }

    Report run() {
        checkSsid(options_.ssid, facts_.what);
        ConnectPlan plan = this->plan();
        if (auto* failure = std::get_if<Failure>(&plan)) {
            failure->what = facts_.what;
            throw CommandFailed(*failure);
        }
        if (std::holds_alternative<AlreadyConnected>(plan)) {
            return alreadyConnected();
        }
        if (const auto block = radioBlock()) {
            throw CommandFailed(block->failure(facts_.what));
        }
        if (auto* settings = std::get_if<UseSettings>(&plan)) {
            use(std::move(*settings));
        } else {
            const auto* saved = std::get_if<UseSaved>(&plan);
            facts_.saved = true;
            facts_.inRange = saved == nullptr || saved->inRange;
        }
        Session& session = place_.act(facts_.what, Workspace::Need::stack);
        session.takeFailures();
        // The supplicant may have begun, or finished, since the plan was made. A request could cut the link.
        if (facts_.saved && session.latest().isInUse(facts_.ssid)) {
            if (session.latest().connection.info.status == wifi::ConnectionInfo::Status::connected) {
                place_.finish();
                return alreadyConnected();
            }
            facts_.waits = facts_.inRange = true;
        }
        return tryUntilRight(session);
    }

  private:
    void setName(const std::string& ssid) {
        facts_.ssid = ssid;
        facts_.name = quoted(ssid, output_.terminal().utf8);
        facts_.what = "cannot connect to " + facts_.name;
        facts_.again = sameCommand(ssid, options_.connect);
    }

    Report alreadyConnected() const {
        Json members = ssidMembers(facts_.ssid);
        members["outcome"] = "already-connected";
        return {fmt::format("Already connected to {}.\n", facts_.name), members, std::nullopt};
    }

    ConnectPlan plan() {
        Snapshot view = place_.look(facts_.what, Workspace::Need::stack);
        ConnectPlan plan = planFor(view, false);
        if (std::holds_alternative<LookFirst>(plan)) {
            view = lookAround(facts_.what, place_, output_);
            plan = planFor(view, true);
        }
        if (const wifi::WifiNetwork* network = view.find(facts_.ssid);
            network != nullptr && options_.connect.security &&
            !mayFit(view.accessTo(*network).mode, *options_.connect.security)) {
            facts_.announced = view.accessTo(*network).mode;
        }
        if (view.find(facts_.ssid) == nullptr) {
            considerSaved(plan, view);
        }
        auto* failure = std::get_if<Failure>(&plan);
        if (failure != nullptr && failure->code == ExitCode::notFound && facts_.similar) {
            failure->advice = "kazwifictl connect " + shellArgument(*facts_.similar, true);
        }
        return plan;
    }

    // The list has only networks in range. Others may be saved, too.
    void considerSaved(ConnectPlan& plan, const Snapshot& view) {
        const auto known = savedSsids();
        const auto saved = known.value_or(std::vector<std::string>());
        const bool isSaved = std::find(saved.begin(), saved.end(), facts_.ssid) != saved.end();
        if (auto* settings = std::get_if<UseSettings>(&plan)) {
            settings->replaces = settings->replaces || isSaved;
        } else if (std::holds_alternative<UseSaved>(plan) && known && !isSaved) {
            // An attempt would end the present connection for nothing.
            plan = Failure{ExitCode::notFound,
                           {},
                           "it is not in range, and no network with this name is saved",
                           "kazwifictl list, or --hidden and --security if it is hidden"};
        }
        auto names = view.names();
        std::copy_if(saved.begin(), saved.end(), std::back_inserter(names),
                     [&names](const std::string& ssid) {
                         return std::find(names.begin(), names.end(), ssid) == names.end();
                     });
        facts_.similar = similarName(facts_.ssid, names);
    }

    // A name may also be typed as it is shown.
    ConnectPlan planFor(const Snapshot& view, bool looked) {
        const auto names = view.names();
        if (std::find(names.begin(), names.end(), facts_.ssid) == names.end()) {
            setName(nameShownAs(facts_.ssid, names).value_or(facts_.ssid));
        }
        return planConnect(facts_.ssid, options_.connect, view, looked, ConnectQuestions::canAsk());
    }

    void use(UseSettings plan) {
        if (plan.replaces) {
            ask_.confirmReplacing(facts_.what, facts_.name,
                                  "kazwifictl connect " + shellArgument(facts_.ssid, true));
        }
        facts_.saved = false;
        facts_.replaced = plan.replaces;
        settings_ = std::move(plan.settings);
        certificates_ = std::move(plan.certificates);
        facts_.server = serverTrust(settings_.securityMode, certificates_);
        ask_.complete(facts_.name, settings_, certificates_);
    }

    void request(Session& session) {
        if (facts_.saved) {
            session.manager().connectConfigured(facts_.ssid);
            return;
        }
        const bool bytes = isByteName(settings_.ssid);
        ConnectResult verdict = bytes ? validateByteName(settings_, session.manager())
                                      : session.manager().validate(settings_, certificates_);
        if (verdict == ConnectResult::ok && bytes) {
            connectByBytes(session);
        } else if (verdict == ConnectResult::ok) {
            verdict = session.manager().connect(settings_, certificates_);
        }
        wipeSecrets();
        if (verdict != ConnectResult::ok) {
            throw CommandFailed(
                {ExitCode::refused, facts_.what, brokenRule(verdict, settings_.securityMode),
                 adviceFor(verdict, settings_.securityMode, options_.connect, session.manager())});
        }
    }

    void connectByBytes(Session& session) {
        if (facts_.replaced) {
            session.manager().forgetNetwork(facts_.ssid);
            session.carriedOut(Session::requestLimit);
        }
        addByteName(settings_, facts_.what);
        session.manager().connectConfigured(facts_.ssid);
    }

    void wipeSecrets() {
        wipe(settings_.password);
        wipe(certificates_.keyPassword);
    }

    // On a terminal a wrong password may be typed again.
    Report tryUntilRight(Session& session) {
        for (int tries = 1;; ++tries) {
            Report report = follow(session);
            if (!keyRefused_ || tries == mostTries || !asksAgain(session, report)) {
                place_.finish();
                return report;
            }
        }
    }

    bool asksAgain(Session& session, const Report& report) {
        if (!ask_.canAskAgain() || facts_.wait.count() == 0 || !certificates_.keyFile.empty()) {
            return false;
        }
        if (facts_.saved) {
            ConnectOptions options = options_.connect;
            options.replace = true;
            ConnectPlan plan = planConnect(facts_.ssid, options, session.latest(), true);
            auto* settings = std::get_if<UseSettings>(&plan);
            if (settings == nullptr) {
                return false;
            }
            settings_ = std::move(settings->settings);
        }
        output_.say(fmt::format("  {}\n", report.failure ? report.failure->why : ""));
        const std::string question =
            facts_.saved ? fmt::format("New password for {}, empty to keep the saved one: ", facts_.name)
                         : fmt::format("Password for {}, empty to give up: ", facts_.name);
        if (!ask_.askAgain(question, settings_.password)) {
            return false;
        }
        facts_.replaced = facts_.replaced || facts_.saved;
        facts_.saved = false;
        facts_.waits = false;  // what is typed must be requested
        return true;
    }

    Report follow(Session& session) {
        Attempt attempt =
            facts_.waits ? Attempt(facts_.ssid, session.latest()) : Attempt(facts_.ssid, Clock::now());
        if (!facts_.waits) {
            request(session);
        }
        output_.say(beginningOf(facts_, settings_.securityMode, output_));
        try {
            return watch(session, attempt) ? end(session, attempt) : startedReport(facts_);
        } catch (const Interrupted&) {
            interrupt(session, attempt);
            throw;
        }
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
        lines.show(attempt);
        session.until(
            Clock::now() + limit, [&](const Snapshot&) { return attempt.outcome().has_value(); }, observer);
        return true;
    }

    // The attempt may not know it, for example when the link was up before the request.
    bool linkIsUp(Session& session, const Attempt& attempt) const {
        const Snapshot& now = session.latest();
        return attempt.linkIsUp() ||
               (now.isInUse(facts_.ssid) &&
                now.connection.info.status >= wifi::ConnectionInfo::Status::connectingIP);
    }

    // callOff() also changes the connection. `attempt` does not see these changes, so they do not become its outcome.
    Report end(Session& session, const Attempt& attempt) {
        const bool linkWasUp = linkIsUp(session, attempt) || attempt.outcome() == Attempt::Outcome::lost;
        facts_.kept = linkWasUp || facts_.saved || options_.connect.keep;
        if (!attempt.outcome() && !linkWasUp && !facts_.waits) {
            callOff(session);
        } else {
            if (!facts_.kept) {
                session.manager().forgetNetwork(facts_.ssid);
            }
            session.carriedOut(Session::requestLimit);
        }
        facts_.saveFailed = session.takeFailures().contains(wifi::RequestFailure::notSaved);
        facts_.security = settings_.securityMode;
        keyRefused_ = attempt.outcome() == Attempt::Outcome::failed &&
                      (attempt.failure().cause == wifi::Cause::wrongKey ||
                       attempt.failure().cause == wifi::Cause::eapRejected);
        return connectReport(attempt, facts_, output_);
    }

    // Ends an attempt in progress. The library has disabled the other saved networks for the attempt, and it saves
    // nothing before the attempt ends. So the attempt must end, even when the user no longer waits for it.
    void callOff(Session& session) const {
        if (facts_.saved || options_.connect.keep) {
            session.manager().disconnect();
        } else {
            session.manager().forgetNetwork(facts_.ssid);
        }
        try {
            session.until(Clock::now() + callOffLimit,
                          [](const Snapshot& view) { return view.isDisconnected(); });
            session.carriedOut(Session::requestLimit);
        } catch (const Interrupted&) {  // an impatient user; the request must be carried out
            session.carriedOut(Session::requestLimit);
        }
    }

    // A link that is up stays, as at the end of the time. So does an attempt of the supplicant's own.
    void interrupt(Session& session, const Attempt& attempt) {
        const bool up = linkIsUp(session, attempt);
        if (!up && !facts_.waits) {
            callOff(session);
        }
        place_.finish();
        output_.say(interruptedText(facts_, up, options_.connect.keep));
    }

    const Options& options_;
    Workspace& place_;
    Output& output_;
    ConnectQuestions ask_;
    ConnectFacts facts_;
    wifi::ConnectionSettings settings_;
    wifi::Certificates certificates_;
    bool keyRefused_ = false;
};

}  // namespace

Report connectTo(const Options& options, Workspace& place, Output& output) {
    return ConnectCommand(options, place, output).run();
}

}  // namespace kaz::ctl
