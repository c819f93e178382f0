#include "manager/network_in_use_reports.h"

#include <algorithm>

namespace kaz::wifi {

void NetworkInUseReports::note(const Communicator::SupplicantInterfaceProperties& report) {
    if (report.authMode) {
        authMode_ = *report.authMode;
    }
    switch (report.currentBssChange) {
        case Communicator::PropertyChange::Unchanged:
            return;
        case Communicator::PropertyChange::Cleared:
            bss_.reset();
            break;
        case Communicator::PropertyChange::Set:
            bss_ = report.currentBss;
            break;
    }
    rate_ = 0;
}

NetworkInUse NetworkInUseReports::of(const ConnectionInfo& info) const {
    if (info.status < ConnectionInfo::Status::connectingIP || !bss_ || bss_->ssid != info.ssid) {
        return {};
    }
    return {securityModeInUse(authMode_, bss_->securityMode), bss_->bssid, bss_->frequency,
            std::max(rate_, 0)};
}

SecurityMode securityModeInUse(const std::string& authMode, SecurityMode ofBss) {
    const auto has = [&](const char* part) { return authMode.find(part) != std::string::npos; };
    if (has("SAE")) {
        return SecurityMode::sae;
    }
    if (has("EAP")) {
        return SecurityMode::enterprise;
    }
    if (has("PSK") && ofBss != SecurityMode::wpaPsk) {
        return SecurityMode::rsnPsk;
    }
    return ofBss;
}

}  // namespace kaz::wifi
