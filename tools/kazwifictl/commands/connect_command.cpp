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
        : options_(options),
          place_(place),
          output_(output),
          name_(quoted(options.ssid, output.terminal().utf8)),
          what_("cannot connect to " + name_) {}
    ~ConnectCommand() { wipe(settings_.password); }

    Report run();

  private:
    ConnectPlan plan();
    void fetchPassword();
    void request(Session& session);
    Report follow(Session& session);
    std::string beginning() const;
    bool watch(Session& session, Attempt& attempt);
    Report end(Session& session, const Attempt& attempt);
    void callOff(Session& session);
    std::string advice(ConnectResult verdict, Session& session) const;

    const Options& options_;
    Workspace& place_;
    Output& output_;
    std::string name_;
    std::string what_;
    bool saved_ = false;
    bool inRange_ = true;
    wifi::ConnectionSettings settings_;
};

Report ConnectCommand::run() {
    checkSsid(options_.ssid, what_);
    ConnectPlan plan = this->plan();
    if (auto* failure = std::get_if<Failure>(&plan)) {
        failure->what = what_;
        throw CommandFailed(*failure);
    }
    if (std::holds_alternative<AlreadyConnected>(plan)) {
        Json members = ssidMembers(options_.ssid);
        members["outcome"] = "already-connected";
        return {fmt::format("Already connected to {}.\n", name_), members, std::nullopt};
    }
    if (auto* settings = std::get_if<UseSettings>(&plan)) {
        settings_ = std::move(settings->settings);
        fetchPassword();
    } else if (const auto* saved = std::get_if<UseSaved>(&plan)) {
        saved_ = true;
        inRange_ = saved->inRange;
    }
    Session& session = place_.act(what_, Workspace::Need::stack);
    place_.log().forgetHints();
    return follow(session);
}

ConnectPlan ConnectCommand::plan() {
    ConnectPlan plan =
        planConnect(options_.ssid, options_.connect, place_.look(what_, Workspace::Need::stack), false);
    if (std::holds_alternative<LookFirst>(plan)) {
        plan = planConnect(options_.ssid, options_.connect, lookAround(what_, place_, output_), true);
    }
    return plan;
}

void ConnectCommand::fetchPassword() {
    if (!takesPassword(settings_.securityMode)) {
        return;
    }
    const auto& file = options_.connect.passwordFile;
    if (file) {
        settings_.password = readSecret(*file, place_.interrupts());
    } else if (::isatty(STDIN_FILENO) == 1) {
        output_.sayForNow({});  // erases the progress line, because the question bypasses output_
        settings_.password = askSecret(fmt::format("Password for {}: ", name_), place_.interrupts());
    } else {
        settings_.password = readSecret("-", place_.interrupts());
    }
}

void ConnectCommand::request(Session& session) {
    if (saved_) {
        session.manager().connectConfigured(options_.ssid);
        return;
    }
    const ConnectResult verdict = session.manager().connect(settings_);
    wipe(settings_.password);
    if (verdict != ConnectResult::ok) {
        throw CommandFailed({ExitCode::refused, what_,
                             std::string(brokenRule(verdict, settings_.securityMode)),
                             advice(verdict, session)});
    }
}

// What to try instead of settings that break a rule.
std::string ConnectCommand::advice(ConnectResult verdict, Session& session) const {
    const bool sae = settings_.securityMode == SecurityMode::sae;
    const std::string_view length = sae ? "a password of 1 to 1024 bytes" : "a password of 8 to 63 bytes";
    if (verdict == ConnectResult::eapMethodUnsupported) {
        const auto methods = session.manager().eapMethods();
        return methods.empty() ? "without --eap"
                               : fmt::format("--eap with one of {}", fmt::join(methods, ", "));
    }
    if (verdict == ConnectResult::phase2MethodUnsupported) {
        return fmt::format("--phase2 with one of {}", fmt::join(session.manager().phase2Methods(), ", "));
    }
    return std::string(
        textOf(verdict,
               {{ConnectResult::passwordTooShort, length},
                {ConnectResult::passwordTooLong, length},
                {ConnectResult::wepKeyInvalidLength, "the key as text, not in hexadecimal digits"},
                {ConnectResult::securityModeUnsupported,
                 "--security wpa3 if the network uses WPA3 with a password"}},
               ""));
}

Report ConnectCommand::follow(Session& session) {
    Attempt attempt(options_.ssid, Clock::now());
    request(session);
    output_.say(beginning());
    try {
        return watch(session, attempt) ? end(session, attempt) : startedReport(options_.ssid, name_);
    } catch (const Interrupted&) {
        callOff(session);
        throw;
    }
}

std::string ConnectCommand::beginning() const {
    const std::string name = output_.style().bold(name_);
    if (saved_ && !inRange_) {
        return fmt::format("Trying {}, which is not in range but may be saved\n", name);
    }
    return fmt::format("Connecting to {} ({})\n", name,
                       saved_ ? "saved" : securityInWords(settings_.securityMode));
}

// False when the command must return while the attempt continues.
bool ConnectCommand::watch(Session& session, Attempt& attempt) {
    StageLines lines(output_);
    const auto observer = [&](const Snapshot& before, const Snapshot& now) {
        attempt.see(before, now);
        lines.show(attempt);
    };
    milliseconds limit = options_.connect.wait;
    if (limit == milliseconds::zero()) {
        await(
            session, beginLimit, [&](const Snapshot&) { return attempt.begun(); },
            {ExitCode::timedOut, what_, "the library did not start the attempt", "kazwifictl status"},
            observer);
        if (!place_.continueInBackground(
                [&] { present(startedReport(options_.ssid, name_), options_.command, output_); })) {
            return false;
        }
        limit = ConnectOptions{}.wait;
    }
    session.until(
        Clock::now() + limit, [&](const Snapshot&) { return attempt.outcome().has_value(); }, observer);
    return true;
}

// callOff() also changes the connection. `attempt` does not see these changes, so they do not become its outcome.
Report ConnectCommand::end(Session& session, const Attempt& attempt) {
    const bool linkWasUp = attempt.linkIsUp() || attempt.outcome() == Attempt::Outcome::lost;
    const bool kept = linkWasUp || saved_ || options_.connect.keep;
    if (!attempt.outcome() && !linkWasUp) {
        callOff(session);
    } else if (kept) {
        place_.finish();  // the pass that published the outcome also saves
    } else {
        session.manager().forgetNetwork(options_.ssid);
        place_.fenceAndFinish();
    }
    const LibraryLog::Hints hints = place_.log().hints();
    const ConnectFacts facts{options_.ssid, name_,    what_, settings_.securityMode,
                             saved_,        inRange_, kept,  options_.connect.wait,
                             hints};
    return connectReport(attempt, facts, output_);
}

// Ends an attempt in progress. The library has disabled the other saved networks for the attempt, and it saves
// nothing before the attempt ends. So the attempt must end, even when the user no longer waits for it.
void ConnectCommand::callOff(Session& session) {
    if (saved_ || options_.connect.keep) {
        session.manager().disconnect();
    } else {
        session.manager().forgetNetwork(options_.ssid);
    }
    try {
        session.until(Clock::now() + callOffLimit,
                      [](const Snapshot& view) { return view.isDisconnected(); });
    } catch (const Interrupted&) {  // an impatient user; the fence completes the request
    }
    place_.fenceAndFinish();
}

}  // namespace

Report connectTo(const Options& options, Workspace& place, Output& output) {
    return ConnectCommand(options, place, output).run();
}

}  // namespace kaz::ctl
