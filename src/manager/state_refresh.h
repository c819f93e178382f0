#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "manager/network_list.h"
#include "manager/single_task.h"

namespace kaz::wifi {

// Reads the supplicant's state again where its reports are not enough: how strong the access points are after a scan,
// which networks another client has configured, and what became of an attempt that stands still. Loop thread only.
class StateRefresh : NonCopyable {
  public:
    StateRefresh(Communicator& communicator, ConnectionInfoHelper& tracker, NetworkList& list)
        : communicator_(communicator),
          tracker_(tracker),
          list_(list),
          bssList_(communicator),
          networks_(communicator),
          state_(communicator) {}

    // After a scan the list is stale until the supplicant reports it, which it does when another access point came or
    // went. If it does not, idle() posts the task that reads the list. During an attempt it waits, because a long list
    // would delay the reports of the attempt.
    void scanEnded() { bssListStale_ = true; }
    void bssListReported() { bssListStale_ = false; }
    // Another client has added or removed a configured network. The list waits in the same way.
    void networksChanged() { networksStale_ = true; }
    void supplicantDetached() { bssListStale_ = networksStale_ = false; }
    void idle();

    // Posts the task that reads everything if the supplicant has just connected but did not say to what: when it was
    // joining the network before the attempt began, it reported the BSS before, too.
    void reported();

    // Posts the task that reads everything if an attempt has stood still for long.
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
