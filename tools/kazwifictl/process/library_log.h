#pragma once

#include <memory>
#include <optional>

#include "base/non_copyable.h"

namespace kaz::ctl {

// Takes over the process's default logger, which the library writes to. Verbose: the records go to stderr.
//
// A few things that a person wants to know are told by the library in its log only; they are taken from
// there. They refine what a command says, and whether it succeeded, never when it is over.
class LibraryLog : NonCopyable {
  public:
    struct Hints {
        bool noBus = false;                   // the system bus cannot be reached
        bool gaveUp = false;                  // the supplicant did not react to an attempt
        bool saveFailed = false;              // the supplicant did not write its configuration
        bool nothingForgotten = false;        // a network to forget was not in the configuration
        std::optional<int> disconnectReason;  // IEEE 802.11 reason code of the last disconnection
    };

    explicit LibraryLog(bool verbose);
    // Nothing is logged any more.
    ~LibraryLog();

    // What was logged since the start or the last forgetHints().
    Hints hints() const;
    void forgetHints();

  private:
    class Sink;
    std::shared_ptr<Sink> sink_;
};

}  // namespace kaz::ctl
