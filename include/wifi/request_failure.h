/// @file
/// What Manager::whenCarriedOut tells about requests.
#pragma once

#include <wifi/failure_reason.h>

#include <cstdint>
#include <map>

namespace kaz::wifi {

/// Why a request had no effect, or not the whole one, as far as the daemons said so. The outcome of an attempt to
/// connect is not among them: it shows in ConnectionInfo. Later versions may add values.
enum class RequestFailure : std::int32_t {
    dropped = 1,      ///< 4096 requests were waiting, so it was dropped
    notAttached = 2,  ///< Manager::isWifiStackInitialized() was false, so nobody was asked
    refused = 3,      ///< the supplicant refused it or did not answer; also a disconnect without a connection
    unknownNetwork = 4,    ///< connectConfigured, forgetNetwork: no configuration of this SSID was found
    notSaved = 5,          ///< the supplicant could not write its configuration, so the change ends with it
    choiceNotWritten = 6,  ///< setEnabled: the configuration file could not be written
    unitRefused = 7,       ///< setEnabled: systemd refused to start or stop the supplicant, or did not answer
};

/// What failed of some requests. `refused`, `notSaved` and `unitRefused` have a reason, as far as it is known; if several
/// requests failed in the same way, that of the last one. The others have none.
using RequestFailures = std::map<RequestFailure, FailureReason>;

}  // namespace kaz::wifi
