#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "manager/connection_refresh.h"
#include "manager/network_list.h"
#include "manager/single_task.h"
#include "manager/supplicant_configuration.h"
#include "outcome/judge.h"

#include <wifi/certificates.h>
#include <wifi/request_failure.h>
#include <wifi/types.h>

#include <optional>
#include <string>

namespace kaz::wifi {

// The requests to connect, disconnect and forget. Each informs the tracker and publishes before it calls the
// supplicant. If a call fails, the tracker's timeout ends the attempt. The tasks return what the supplicant refused. Loop
// thread only.
class Connecting : NonCopyable {
  public:
    Connecting(Communicator& communicator, ConnectionInfoHelper& tracker, ConnectionRefresh& refresh,
               SupplicantConfiguration& configuration, NetworkList& list, Judge& judge);

    std::optional<RequestFailure> taskConnect(const ConnectionSettings& settings,
                                              const Certificates& certificates);
    std::optional<RequestFailure> taskConnectConfigured(const std::string& ssid);
    std::optional<RequestFailure> taskDisconnect();
    std::optional<RequestFailure> taskForgetNetwork(const std::string& ssid);

    // The supplicant selected a network at the request of a client. It does not signal a choice of its own.
    void signalNetworkSelected();
    void signalSupplicantStatus(std::optional<Communicator::SupplicantConnectionStatus> status);
    // The supplicant was attached or detached.
    void supplicantChanged();

  private:
    void taskStayDisconnected();
    bool disconnectSync();
    void noteFailedRequest();
    std::optional<RequestFailure> taskConnectCommon(Communicator::ConfiguredNetwork& network);

    Communicator& communicator_;
    ConnectionInfoHelper& tracker_;
    ConnectionRefresh& refresh_;
    SupplicantConfiguration& configuration_;
    NetworkList& list_;
    Judge& judge_;
    // What the supplicant's refusal to disconnect may mean. While it searches, it refuses and continues to search.
    enum class Refusal { none, searching, unclear };
    Refusal refusal_ = Refusal::none;
    int unreportedSelections_ = 0;  // ours, whose signals are still to come
    SingleTask stayDisconnected_{communicator_};
};

}  // namespace kaz::wifi
