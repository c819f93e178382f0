#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "manager/network_list.h"
#include "manager/single_task.h"

namespace kaz::wifi {

// Reads the supplicant's state again where its reports are not enough: the signals of the access points after a scan,
// the networks that another client has configured, and the state of an attempt that makes no progress. Loop thread
// only.
class StateRefresh : NonCopyable {
  public:
    StateRefresh(Communicator& communicator, ConnectionInfoHelper& tracker, NetworkList& list)
        : communicator_(communicator),
          tracker_(tracker),
          list_(list),
          bssList_(communicator),
          networks_(communicator),
          state_(communicator) {}

    // After a scan the list is stale until the supplicant reports a new one. It reports one only when access points
    // appeared or disappeared. Otherwise idle() posts the task that reads the list, but not while an attempt is
    // pending: reading a long list would delay the attempt's reports.
    void scanEnded() { bssListStale_ = true; }
    void bssListReported() { bssListStale_ = false; }
    // Another client has added or removed a configured network. idle() posts the task that reads them in the same way.
    void networksChanged() { networksStale_ = true; }
    void supplicantDetached() { bssListStale_ = networksStale_ = false; }
    void idle();

    // Posts the task that reads everything if the supplicant has just connected but has not reported the BSS since the
    // attempt began. It reported the BSS earlier if it was joining the network already.
    void reported();

    // Posts the task that reads everything if an attempt has been in link set-up for 10 s or more.
    void timerCompleted();

  private:
    void post();

    Communicator& communicator_;
    ConnectionInfoHelper& tracker_;
    NetworkList& list_;
    bool bssListStale_ = false;
    bool networksStale_ = false;
    SingleTask bssList_;
    SingleTask networks_;
    SingleTask state_;
};

}  // namespace kaz::wifi
