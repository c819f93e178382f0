#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "manager/published.h"
#include "manager/request_ledger.h"

#include <wifi/request_failure.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>

namespace kaz::wifi {

// The user's choice of Wi-Fi on or off: a flag, the configuration file, and the supplicant, which starts and stops
// accordingly. Thread-safe.
//
// No lock is held while the communicator is called. It may wait for another process that holds the file's lock, and it
// may log, to a sink that calls setEnabled().
class EnabledChoice : NonCopyable {
  public:
    // Starts with the choice that is stored.
    EnabledChoice(Communicator& communicator, Published& published, RequestLedger& requests);

    bool isEnabled() const { return enabled_; }

    // Sets the flag and writes the file on the calling thread, then posts the start or stop of the supplicant. If two
    // threads call at the same time, flag, file and supplicant end with the same choice.
    void setEnabled(bool on);

    // Reads the file again and sets the flag to its value. Returns true if the flag changed. Does nothing while
    // setEnabled() runs, because its choice is newer than the file. It never waits for setEnabled().
    bool adoptStoredChoice();

  private:
    struct Choice {
        std::uint64_t number = 0;
        bool on = false;
        bool changesFlag = false;
    };
    class Call;

    Choice begin(bool on);
    void end();
    Choice latest();
    bool store();
    std::optional<RequestFailure> taskStartOrStopSupplicant(Choice choice);

    Communicator& communicator_;
    Published& published_;
    RequestLedger& requests_;
    std::mutex mutex_;  // of the numbers, and of the writes to the flag
    std::atomic<bool> enabled_;
    std::uint64_t begun_ = 0;  // calls of setEnabled()
    std::uint64_t ended_ = 0;
    Choice applied_;  // the newest of the tasks that ran; loop thread only
};

}  // namespace kaz::wifi
