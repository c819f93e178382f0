#pragma once

#include "base/non_copyable.h"
#include "base/wipe.h"

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <string>
#include <utility>

namespace kaz::wifi {

// A copy of connection settings that wipes its secrets when it is destroyed, whether its task ran or was dropped.
class WipedSettings : NonCopyable {
  public:
    // `eapMethod` replaces that of the settings.
    WipedSettings(
        const ConnectionSettings& settings,  // NOLINT(modernize-pass-by-value): one more copy to wipe
        const Certificates& certificates,    // NOLINT(modernize-pass-by-value): the same
        std::string eapMethod)
        : settings_(settings), certificates_(certificates) {
        settings_.eapMethod = std::move(eapMethod);
    }
    ~WipedSettings() {
        wipe(settings_.password);
        wipe(settings_.identity);
        wipe(settings_.anonymousIdentity);
        wipe(certificates_.keyPassword);
    }

    const ConnectionSettings& settings() const { return settings_; }
    const Certificates& certificates() const { return certificates_; }

  private:
    ConnectionSettings settings_;
    Certificates certificates_;
};

}  // namespace kaz::wifi
