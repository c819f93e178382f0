#pragma once

#include "base/non_copyable.h"
#include "base/wipe.h"

#include <wifi/types.h>

namespace kaz::wifi {

// A copy of connection settings that wipes its secrets when it is destroyed, whether its task ran or was dropped.
class WipedSettings : NonCopyable {
  public:
    // NOLINTNEXTLINE(modernize-pass-by-value): a value argument would be one more copy to wipe
    explicit WipedSettings(const ConnectionSettings& settings) : settings_(settings) {}
    ~WipedSettings() {
        wipe(settings_.password);
        wipe(settings_.identity);
        wipe(settings_.anonymousIdentity);
    }

    const ConnectionSettings& get() const { return settings_; }

  private:
    ConnectionSettings settings_;
};

}  // namespace kaz::wifi
