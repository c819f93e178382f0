#pragma once

#include "communicator/communicator.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <optional>
#include <string>

namespace kaz::wifi {

// What the supplicant reports of the access point in use. Loop thread only.
class NetworkInUseReports {
  public:
    void note(const Communicator::SupplicantInterfaceProperties& report);
    // In Mbit/s. It belongs to the present access point.
    void setRate(std::optional<int> rate) { rate_ = rate.value_or(0); }

    // The network of this record. Empty while its link is not up.
    NetworkInUse of(const ConnectionInfo& info) const;

  private:
    std::optional<Communicator::BssProperties> bss_;
    std::string authMode_;
    int rate_ = 0;
};

// The mode that the supplicant's CurrentAuthMode means. For a name that says too little, that of the access point.
SecurityMode securityModeInUse(const std::string& authMode, SecurityMode ofBss);

}  // namespace kaz::wifi
