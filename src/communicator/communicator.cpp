#include "communicator/communicator.h"

#include "diagnostics/ssid_redaction.h"

namespace kaz::wifi {

// Reports that arrive before anybody is interested are dropped. A report of the link being online has no
// default on purpose: losing one would leave the connection short of `connected` for ever.
Communicator::Communicator()
    : wifiServiceStatusChangeHandler([] {}),
      scanningDoneHandler([](bool) {}),
      networkSelectedHandler([](const std::optional<std::string>&) {}),
      supplicantPropertiesHandler([](const SupplicantInterfaceProperties&) {}) {}

Communicator::~Communicator() = default;

std::string Communicator::makeSsidRedactable(const std::string& ssid) {
    return redactableSsid(ssid);
}

}  // namespace kaz::wifi
