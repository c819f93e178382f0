#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "manager/single_task.h"

namespace kaz::wifi {

// Reads the supplicant's state again where its reports are not enough: how strong the access points are after a scan,
// and what became of an attempt that stands still. Loop thread only.
class StateRefresh : NonCopyable {
  public:
    StateRefresh(Communicator& communicator, ConnectionInfoHelper& tracker)
        : communicator_(communicator), tracker_(tracker), bssList_(communicator), state_(communicator) {}

    // Posts the task that reads the access points, unless one waits already.
    void scanEnded();

    // Posts the task that reads everything if the supplicant has just connected but did not say to what: when it was
    // joining the network before the attempt began, it reported the BSS before, too.
    void reported();

    // Posts the task that reads everything if an attempt has stood still for long.
    void timerCompleted();

  private:
    void post();

    Communicator& communicator_;
    ConnectionInfoHelper& tracker_;
    SingleTask bssList_;
    SingleTask state_;
};

}  // namespace kaz::wifi
