#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "connection_info/connection_metrics.h"
#include "manager/network_in_use_reports.h"
#include "manager/network_list.h"
#include "manager/presentation.h"
#include "manager/published.h"
#include "manager/supplicant_configuration.h"
#include "outcome/judge.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

namespace kaz::wifi {

// Publishes the tracker's record with its details when one of them has changed. Before that it reacts to the change: it sets the gauges, arms or
// disarms the timer that polls the signal, sets priorities after a success, and enables the other networks after an
// attempt. Loop thread only.
class ConnectionRefresh : NonCopyable {
  public:
    ConnectionRefresh(Communicator& communicator, ConnectionInfoHelper& tracker,
                      SupplicantConfiguration& configuration, NetworkList& list, Judge& judge,
                      const NetworkInUseReports& inUse, Presentation& presentation, Published& published);

    void taskUpdateConnectionInfo();

  private:
    void reactToChange(const ConnectionInfo& info);
    void updateSignalPollTimer(const ConnectionInfo& next);
    void reactToSuccess(const ConnectionInfo& next);
    void reactToEndOfAttempt(const ConnectionInfo& next);

    Communicator& communicator_;
    ConnectionInfoHelper& tracker_;
    SupplicantConfiguration& configuration_;
    NetworkList& list_;
    Judge& judge_;
    const NetworkInUseReports& inUse_;
    Presentation& presentation_;
    Published& published_;
    ConnectionMetrics metrics_;
    ConnectionDetails details_;  // as last published
    bool connectionInfoStored_ = false;
};

}  // namespace kaz::wifi
