#include "outcome/verdict.h"

#include "outcome/codes.h"

namespace kaz::wifi {
namespace {

constexpr Verdict nothing{Cause::none, Certainty::unknown};

constexpr Verdict certain(Cause cause) {
    return {cause, Certainty::certain};
}

constexpr Verdict probable(Cause cause) {
    return {cause, Certainty::probable};
}

bool explains(const Verdict& verdict) {
    return verdict.cause != Cause::none;
}

Verdict verdictOnEnd(const Facts& facts) {
    switch (facts.end) {
        case Facts::End::bySystem:
            return nothing;
        case Facts::End::givenUp:
            return certain(Cause::givenUp);
        case Facts::End::replaced:
            return certain(Cause::replaced);
        case Facts::End::supplicantGone:
            return certain(Cause::supplicantGone);
    }
    return nothing;
}

Verdict verdictOnRequest(const Facts& facts) {
    if (facts.radioOff) {
        return certain(Cause::radioBlocked);
    }
    switch (facts.request) {
        case Facts::Request::accepted:
            return facts.silent ? certain(Cause::supplicantSilent) : nothing;
        case Facts::Request::refused:
            return certain(Cause::requestRefused);
        case Facts::Request::unanswered:
            return certain(Cause::supplicantSilent);
        case Facts::Request::failed:
            return probable(Cause::requestRefused);
    }
    return nothing;
}

bool lacksHashToElement(const Facts& facts) {
    return facts.evidence.demands.hashToElement && facts.hashToElement == false;
}

Verdict verdictOnSearch(const Facts& facts) {
    const Evidence& evidence = facts.evidence;
    if (!evidence.seen) {
        return evidence.scanned && !facts.hidden ? certain(Cause::outOfRange) : probable(Cause::outOfRange);
    }
    if (facts.requested && !meets(*facts.requested, evidence.demands)) {
        return certain(Cause::nothingInCommon);
    }
    if (lacksHashToElement(facts)) {
        return certain(Cause::nothingInCommon);
    }
    // The supplicant saw it and did not try it.
    return evidence.scanned ? probable(Cause::nothingInCommon) : Verdict{};
}

bool isNegotiation(int status) {
    return status == status::capabilitiesUnsupported || status == status::algorithmUnsupported ||
           status == status::ratesUnsupported || status == status::protectionPolicy ||
           (status >= status::invalidElement && status <= status::cipherRejected) ||
           status == status::groupUnsupported;
}

Verdict verdictOnRefusal(int status) {
    if (status == status::tooManyStations) {
        return certain(Cause::full);
    }
    return certain(isNegotiation(status) ? Cause::nothingInCommon : Cause::refused);
}

bool usesSae(const Facts& facts) {
    const NetworkDemands& demands = facts.evidence.demands;
    return facts.requested ? facts.requested == SecurityMode::sae : demands.sae && !demands.rsnPsk;
}

// Access points refuse a station on their deny list and an SAE password with the same status. But before it examines the
// password, an access point accepts the first step.
Verdict verdictOnAuthentication(const Facts& facts) {
    const int status = facts.evidence.authenticationStatus;
    if (status == 0) {
        return nothing;
    }
    if (status == status::challengeFailed || status == status::unknownPasswordIdentifier) {
        return certain(Cause::wrongKey);
    }
    if (status != status::unspecified) {
        return verdictOnRefusal(status);
    }
    if (!usesSae(facts)) {
        return probable(Cause::banned);
    }
    if (facts.evidence.demands.hashToElement && facts.hashToElement != true) {
        return lacksHashToElement(facts) ? certain(Cause::nothingInCommon) : probable(Cause::nothingInCommon);
    }
    return certain(facts.authenticated ? Cause::wrongKey : Cause::refused);
}

// The access point ended the exchange of keys, or the supplicant gave it up.
Verdict verdictOnKeyExchange(const Facts& facts) {
    const Evidence& evidence = facts.evidence;
    switch (evidence.reasonCode) {
        case reason::micFailure:
        case reason::fourWayHandshakeTimeout:
        case reason::unspecified:
        case reason::previousAuthenticationInvalid:
            break;
        default:
            if (!evidence.mismatchReported) {
                return nothing;
            }
    }
    const bool timedOut = evidence.reasonCode == reason::fourWayHandshakeTimeout;
    if (evidence.reasonSender == Evidence::Sender::device && !timedOut && !evidence.mismatchReported) {
        return nothing;
    }
    // A lost frame may fail an exchange, but hardly two in a row.
    return facts.failedExchanges > 0 ? certain(Cause::wrongKey) : probable(Cause::wrongKey);
}

Verdict verdictOnReason(const Evidence& evidence) {
    if (evidence.reasonSender != Evidence::Sender::accessPoint) {
        return probable(Cause::accessPointGone);
    }
    const int code = evidence.reasonCode;
    if (code == reason::accessPointBusy) {
        return certain(Cause::full);
    }
    if (code == reason::leaving || code == reason::stationHasLeft) {
        return certain(Cause::accessPointGone);
    }
    if (code == reason::eapFailed) {
        return probable(Cause::eapRejected);
    }
    if (code == reason::invalidElement ||
        (code >= reason::elementDiffers && code <= reason::cipherRejected)) {
        return certain(Cause::nothingInCommon);
    }
    return certain(Cause::refused);
}

Verdict verdictOnLinkSetup(const Facts& facts) {
    const Evidence& evidence = facts.evidence;
    if (facts.saeMismatch) {
        return certain(Cause::wrongKey);
    }
    if (const Verdict verdict = verdictOnAuthentication(facts); explains(verdict)) {
        return verdict;
    }
    if (evidence.associationStatus != 0) {
        return verdictOnRefusal(evidence.associationStatus);
    }
    if (const Verdict verdict = verdictOnEap(evidence); explains(verdict)) {
        return verdict;
    }
    const bool hasEap = evidence.eap != Evidence::Eap::none;
    if (facts.stage == Stage::keyExchange && !hasEap) {
        if (const Verdict verdict = verdictOnKeyExchange(facts); explains(verdict)) {
            return verdict;
        }
    }
    // While link set-up goes on, silence says nothing.
    return facts.linkDown || evidence.reasonCode != 0 ? verdictOnReason(evidence) : Verdict{};
}

}  // namespace

Verdict verdictOnEap(const Evidence& evidence) {
    switch (evidence.eap) {
        case Evidence::Eap::none:
        case Evidence::Eap::started:
        case Evidence::Eap::methodAgreed:
        case Evidence::Eap::succeeded:
            return nothing;
        case Evidence::Eap::methodRefused:
            return certain(Cause::noEapMethod);
        case Evidence::Eap::serverRefused:
            return certain(Cause::serverUntrusted);
        case Evidence::Eap::rejected:
            return certain(Cause::eapRejected);
    }
    return nothing;
}

bool meets(SecurityMode requested, const NetworkDemands& demands) {
    if (demands == NetworkDemands{}) {
        return true;
    }
    if (demands.adHoc) {
        return false;
    }
    switch (requested) {
        case SecurityMode::none:
            return demands.nothing;
        case SecurityMode::wep:
            return demands.wep;
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
            return demands.wpaPsk || demands.rsnPsk;
        case SecurityMode::sae:
            return demands.sae;
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return demands.enterprise;
        case SecurityMode::unsupported:
            return false;
    }
    return false;
}

SecurityMode modeToJoin(SecurityMode announced, const NetworkDemands& demands,
                        std::optional<bool> hashToElement) {
    if (demands.hashToElement && hashToElement == false) {
        return SecurityMode::unsupported;
    }
    for (const SecurityMode mode : {announced, SecurityMode::sae, SecurityMode::rsnPsk,
                                    SecurityMode::enterprise, SecurityMode::wep, SecurityMode::none}) {
        if (meets(mode, demands)) {
            return mode;
        }
    }
    return SecurityMode::unsupported;
}

Verdict verdictOn(const Facts& facts) {
    if (const Verdict verdict = verdictOnEnd(facts); explains(verdict)) {
        return verdict;
    }
    if (const Verdict verdict = verdictOnRequest(facts); explains(verdict)) {
        return verdict;
    }
    if (facts.wasUp()) {
        return verdictOnLoss(facts.evidence);
    }
    return facts.wasTried() ? verdictOnLinkSetup(facts) : verdictOnSearch(facts);
}

}  // namespace kaz::wifi
