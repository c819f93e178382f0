#include "outcome/judge.h"

#include "outcome/codes.h"
#include "outcome/verdict.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace kaz::wifi {
namespace {

using Eap = Evidence::Eap;
using Sender = Evidence::Sender;
using Status = ConnectionInfo::Status;
using Step = Communicator::LinkStep;

// The report that explains most of both. Methods may be refused before one is agreed, and every kind of trouble ends with
// a failure.
Eap combined(Eap before, Eap next) {
    switch (next) {
        case Eap::none:
            return before;
        case Eap::started:
            return before == Eap::none || before == Eap::succeeded ? next : before;
        case Eap::methodRefused:
            return before == Eap::methodAgreed || before == Eap::serverRefused ? before : next;
        case Eap::rejected:
            return before == Eap::methodRefused || before == Eap::serverRefused ? before : next;
        case Eap::methodAgreed:
        case Eap::serverRefused:
        case Eap::succeeded:
            return next;
    }
    return before;
}

bool recordsEnd(const ConnectionInfo& former, const ConnectionInfo& next) {
    const bool same = next.disconnectTime == former.disconnectTime &&
                      next.disconnectSsid == former.disconnectSsid &&
                      next.disconnectReason == former.disconnectReason;
    return !same && !next.disconnectSsid.empty();
}

bool byUser(const ConnectionInfo& info) {
    return info.disconnectReason == ConnectionInfo::DisconnectReason::causedByUser;
}

bool showsEnd(const ConnectionInfo& former, const ConnectionInfo& next) {
    if (former.status != Status::disconnected) {
        return recordsEnd(former, next) || next.status == Status::disconnected;
    }
    // Forgetting a network makes the user the cause of an end that was recorded before.
    return recordsEnd(former, next) && !byUser(next);
}

Stage stageOf(Status status) {
    switch (status) {
        case Status::disconnected:
        case Status::connectingWifi:
            return Stage::requested;
        case Status::connectingIP:
            return Stage::address;
        case Status::connected:
            return Stage::online;
    }
    return Stage::requested;
}

Stage stageOf(Step step) {
    switch (step) {
        case Step::down:
            return Stage::requested;
        case Step::authenticating:
            return Stage::authenticating;
        case Step::associating:
        case Step::associated:
            return Stage::associating;
        case Step::keyExchange:
            return Stage::keyExchange;
        case Step::up:
            return Stage::address;
    }
    return Stage::requested;
}

}  // namespace

Judge::Judge(std::shared_ptr<TimeProvider> timeProvider, LookUp lookUp)
    : timeProvider_(std::move(timeProvider)), lookUp_(std::move(lookUp)) {}

void Judge::attemptBegan(const std::string& ssid, std::optional<SecurityMode> requested, bool hidden) {
    if (requested) {
        failedExchanges_ = 0;  // the key may be another one
    }
    Facts facts;
    facts.ssid = ssid;
    facts.requested = requested;
    facts.hidden = hidden;
    begin(std::move(facts));
}

// The supplicant confirms our request in the same way.
void Judge::networkSelected(const std::string& ssid) {
    const bool confirmed = !judged_ && current_.ssid == ssid && !current_.linkDown && !current_.wasUp();
    if (!confirmed) {
        Facts facts;
        facts.ssid = ssid;
        begin(std::move(facts));
    }
}

void Judge::begin(Facts facts) {
    if (!judged_) {
        finished_ = std::move(current_);
    }
    current_ = std::move(facts);
    judged_ = false;
    refinable_ = false;
}

void Judge::beginAgain() {
    Facts facts;
    facts.ssid = current_.ssid;
    facts.requested = current_.requested;
    facts.hidden = current_.hidden;
    begin(std::move(facts));
}

void Judge::note(const Communicator::LinkEvidence& evidence) {
    // A link that is being set up has not ended yet. So the reason belongs to the try before.
    if (evidence.disconnectReason) {
        noteReason(*evidence.disconnectReason);
    }
    if (evidence.step && *evidence.step != Step::down) {
        noteStep(*evidence.step);
    }
    if (evidence.authenticationStatus) {
        const int told = *evidence.authenticationStatus;
        const int code = told == status::hashToElement ? 0 : told;
        current_.authenticated = current_.authenticated || code == 0;
        noteStatusCode(current_.evidence.authenticationStatus, code, Stage::authenticating);
    }
    if (evidence.associationStatus) {
        noteStatusCode(current_.evidence.associationStatus, *evidence.associationStatus, Stage::associating);
    }
    if (evidence.eap != Eap::none) {
        current_.evidence.eap = combined(current_.evidence.eap, evidence.eap);
        current_.advanceTo(Stage::eap);
    }
    if (evidence.mismatch != Communicator::KeyMismatch::none) {
        current_.evidence.mismatchReported = true;
        current_.saeMismatch = evidence.mismatch == Communicator::KeyMismatch::saePassword;
    }
    if (evidence.step == Step::down) {
        current_.linkDown = current_.wasTried();
    }
    refine();
}

void Judge::noteStep(Step step) {
    radioOff_ = false;
    if (judged_ || current_.linkDown) {
        beginAgain();
    }
    if (!current_.wasTried()) {
        current_.evidence.reasonCode = 0;  // of the link before
        current_.evidence.reasonSender = Sender::nobody;
    }
    current_.advanceTo(stageOf(step));
    if (step == Step::keyExchange) {
        current_.evidence.keyExchange = true;
    } else if (step == Step::up) {
        current_.evidence = Evidence();  // it did not prevent the connection
        failedExchanges_ = 0;
    }
}

// The device leaves a link that the access point has ended, too, and a try that has ended may leave another link.
void Judge::noteReason(int reason) {
    Evidence& known = current_.evidence;
    const int code = reason == std::numeric_limits<int>::min() ? 0 : std::abs(reason);
    const bool later = judged_ || (reason < 0 && code == reason::leaving);
    if (code != 0 && !(later && known.reasonCode != 0)) {
        known.reasonCode = code;
        known.reasonSender = reason < 0 ? Sender::device : Sender::accessPoint;
    }
}

void Judge::noteStatusCode(int& known, int code, Stage stage) {
    if (!judged_ || known == 0) {
        known = code;
        current_.advanceTo(stage);
    }
}

void Judge::noteStatus(Communicator::SupplicantConnectionStatus status) {
    radioOff_ = radioOff_ || status == Communicator::SupplicantConnectionStatus::InterfaceDisabled;
}

void Judge::noteSilenceAfterEnd() {
    if (!current_.wasTried() && !current_.evidence.scanned) {
        current_.silent = true;
        refine();
    }
}

void Judge::scanEnded(bool success) {
    if (success) {
        radioOff_ = false;
        current_.evidence.scanned = current_.evidence.scanned || !judged_;
    }
}

// The supplicant reports at once which access points come and go, but not that one demands something else. And during an
// attempt the list is not read. So the next list may tell more, but not that an access point has come since.
void Judge::listRead() {
    if (!std::exchange(listAwaited_, false) || !refinable_) {
        return;
    }
    const Evidence evidence = withSighting(current_);
    if (evidence.seen && current_.evidence.seen) {
        current_.evidence = evidence;
        refine();
    }
}

void Judge::supplicantDetached(bool switchedOff) {
    detached_ = true;
    switchedOff_ = switchedOff;
    radioOff_ = false;
    hashToElement_.reset();
}

void Judge::look(const ConnectionInfo& former, const ConnectionInfo& next) {
    if (showsEnd(former, next) || (detached_ && former.status != Status::disconnected)) {
        judge(former, next);
    }
    finished_.reset();
    detached_ = false;
}

void Judge::judge(const ConnectionInfo& former, const ConnectionInfo& next) {
    const bool recorded = recordsEnd(former, next);
    const std::string ssid = recorded ? next.disconnectSsid : former.ssid;
    const bool isFinished = finished_ && finished_->ssid == ssid;
    Facts facts = isFinished ? std::move(*finished_) : current_;
    if (facts.ssid != ssid && !facts.ssid.empty()) {
        facts = Facts();
    }
    facts.ssid = ssid;
    if (former.ssid == ssid) {
        facts.advanceTo(stageOf(former.status));
        facts.lastSignal = former.signal;
    }
    facts.radioOff = radioOff_;
    facts.silent = silent_;
    facts.hashToElement = hashToElement_;
    facts.failedExchanges = failedSsid_ == ssid ? failedExchanges_ : 0;
    const bool live = next.status != Status::disconnected;
    const bool undisturbed = !facts.linkDown && facts.evidence.reasonCode == 0;
    if (detached_) {
        facts.end = switchedOff_ ? Facts::End::givenUp : Facts::End::supplicantGone;
    } else if (recorded && byUser(next)) {
        facts.end = live ? Facts::End::replaced : Facts::End::givenUp;
    } else if (live && next.ssid != ssid && undisturbed && facts.request == Facts::Request::accepted) {
        facts.end = Facts::End::replaced;
    }
    outcome_.time = recorded ? next.disconnectTime : timeProvider_->get();
    refinable_ = !isFinished;
    listAwaited_ = refinable_;
    facts.evidence = withSighting(facts);
    conclude(facts);
    if (refinable_) {
        current_ = std::move(facts);
        judged_ = true;
    }
    if (outcome_.cause == Cause::wrongKey && outcome_.evidence.keyExchange) {
        failedExchanges_ = failedSsid_ == ssid ? failedExchanges_ + 1 : 1;
        failedSsid_ = ssid;
    }
}

Evidence Judge::withSighting(const Facts& facts) const {
    const Evidence sighting = lookUp_(facts.ssid);
    const bool signalKnown = facts.wasUp() && facts.lastSignal != NoSignaldBm;
    Evidence evidence = facts.evidence;
    evidence.seen = sighting.seen;
    evidence.signal = signalKnown ? facts.lastSignal : sighting.signal;
    evidence.demands = sighting.demands;
    return evidence;
}

void Judge::conclude(const Facts& facts) {
    const Verdict verdict = verdictOn(facts);
    outcome_.ssid = facts.ssid;
    outcome_.stage = facts.stage;
    outcome_.cause = verdict.cause;
    outcome_.certainty = verdict.certainty;
    outcome_.evidence = facts.evidence;
}

void Judge::refine() {
    if (refinable_) {
        conclude(current_);
    }
}

}  // namespace kaz::wifi
