#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "manager/published.h"

#include <atomic>
#include <mutex>

namespace kaz::wifi {

// The user's choice of Wi-Fi on or off: a flag, the configuration file, and the supplicant, which starts and stops
// accordingly. Thread-safe.
class EnabledChoice : NonCopyable {
  public:
    // Starts with the choice that is stored.
    EnabledChoice(Communicator& communicator, Published& published);

    bool isEnabled() const { return enabled_; }

    // Sets the flag and writes the file on the calling thread, then posts the start or stop of the supplicant. If two
    // threads call at the same time, all three end with the same choice.
    void setEnabled(bool on);

    // Reads the file again and sets the flag to its value. Returns true if the flag changed. Does nothing while
    // setEnabled() runs, because its choice is newer than the file. It never waits for setEnabled().
    bool adoptStoredChoice();

  private:
    Communicator& communicator_;
    Published& published_;
    std::mutex mutex_;
    std::atomic<bool> enabled_;
};

}  // namespace kaz::wifi
