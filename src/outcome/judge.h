#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/time_provider.h"
#include "outcome/facts.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kaz::wifi {

// Says why a connection or an attempt ended. It collects what is reported of each try, and judges it when the tracker's
// record shows the end. What is reported after that, but before the next try, may refine the outcome.
//
// A try begins when the user requests a network, when the supplicant selects one, and when the supplicant sets up the
// link again after it was down. It begins without evidence, so nothing that is reported sticks. Loop thread only.
class Judge : NonCopyable {
  public:
    // What the access points tell of a network: the evidence's `seen`, `signal` and `demands`.
    using LookUp = std::function<Evidence(const std::string& ssid)>;

    Judge(std::shared_ptr<TimeProvider> timeProvider, LookUp lookUp);

    // The user requested a network, and the tracker's record of that is published. The mode is unknown if the network
    // was configured before.
    void attemptBegan(const std::string& ssid, std::optional<SecurityMode> requested, bool hidden);
    void requestFailed(Facts::Request how) { current_.request = how; }

    // Whether the supplicant has left the last call unanswered. Call it before look().
    void noteSilence(bool silent) { silent_ = silent; }
    // The calls that follow an end were the first that it left unanswered. If it had reported nothing of the try, this
    // refines the outcome.
    void noteSilenceAfterEnd();

    // Reports of the communicator.
    void networkSelected(const std::string& ssid);
    void note(const Communicator::LinkEvidence& evidence);
    void noteStatus(Communicator::SupplicantConnectionStatus status);
    // Whether the supplicant joins networks by hash-to-element.
    void noteHashToElement(bool able) { hashToElement_ = able; }
    void scanEnded(bool success);
    void listRead();
    void supplicantDetached(bool switchedOff);

    // Judges the end that the tracker's record shows, if it shows one. Call it for every record, also an unchanged one.
    void look(const ConnectionInfo& former, const ConnectionInfo& next);

    const Outcome& lastOutcome() const { return outcome_; }

  private:
    void begin(Facts facts);
    void beginAgain();
    void noteStep(Communicator::LinkStep step);
    void noteReason(int reason);
    void noteStatusCode(int& known, int code, Stage stage);
    void judge(const ConnectionInfo& former, const ConnectionInfo& next);
    Evidence withSighting(const Facts& facts) const;
    void conclude(const Facts& facts);
    void refine();

    std::shared_ptr<TimeProvider> timeProvider_;
    LookUp lookUp_;
    Facts current_;
    std::optional<Facts> finished_;  // the try before, until its end is published
    bool judged_ = true;             // the current try has ended
    bool refinable_ = false;         // the outcome is that of the current try
    bool detached_ = false;
    bool switchedOff_ = false;
    bool radioOff_ = false;
    bool silent_ = false;
    std::optional<bool> hashToElement_;
    bool listAwaited_ = false;  // the outcome followed from a list that may be stale
    std::string failedSsid_;
    int failedExchanges_ = 0;  // of failedSsid_, in a row
    Outcome outcome_;
};

}  // namespace kaz::wifi
