#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "manager/network_list.h"
#include "manager/published.h"

#include <atomic>
#include <optional>
#include <string>

namespace kaz::wifi {

// Passes each fact that the supplicant reports to the tracker or to the list. Only the scanning flag is published at
// once. isScanning() may be called from any thread, everything else on the loop thread only.
class SupplicantReports : NonCopyable {
  public:
    SupplicantReports(ConnectionInfoHelper& tracker, NetworkList& list, Published& published)
        : tracker_(tracker), list_(list), published_(published) {}

    bool isScanning() const { return scanning_; }

    void signalScanningDone(bool success);
    void signalNetworkSelected(const std::optional<std::string>& ssid);
    void signalSupplicantPropertiesChanged(Communicator::SupplicantInterfaceProperties properties);

    // Ends scanning without a callback.
    void supplicantDetached() { scanning_ = false; }

  private:
    void setScanning(bool scanning);

    ConnectionInfoHelper& tracker_;
    NetworkList& list_;
    Published& published_;
    std::atomic<bool> scanning_ = false;
};

}  // namespace kaz::wifi
