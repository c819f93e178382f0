#include "communicator/communicator.h"

#include "diagnostics/ssid_redaction.h"

namespace kaz::wifi {

// The defaults drop reports that arrive before the engine has assigned its handlers. networkdOnlineHandler has none:
// after a dropped "online" the connection would never become `connected`.
Communicator::Communicator()
    : wifiServiceStatusChangeHandler([] {}),
      scanningDoneHandler([](bool) {}),
      networkSelectedHandler([](const std::optional<std::string>&) {}),
      supplicantPropertiesHandler([](const SupplicantInterfaceProperties&) {}),
      linkEvidenceHandler([](const LinkEvidence&) {}),
      configuredNetworksChangedHandler([] {}) {}

Communicator::~Communicator() = default;

std::string Communicator::makeSsidRedactable(const std::string& ssid) {
    return redactableSsid(ssid);
}

}  // namespace kaz::wifi
