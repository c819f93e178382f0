#pragma once

#include <memory>
#include <string>

#include "base/non_copyable.h"

namespace kaz::ctl {

// Replaces the process's default logger, to which the library writes. With `verbose`, writes its records to
// stderr.
//
// The library reports a few facts only in its log. This class reads them from the records, as Hints. Hints may
// change what a command prints and whether it succeeds, but never when it returns.
class LibraryLog : NonCopyable {
  public:
    struct Hints {
        bool noBus = false;        // the system bus cannot be reached
        bool noInterface = false;  // the supplicant has no interface that can be used
        bool unitFound = false;    // systemd tells about the supplicant's unit
        std::string systemdError;  // the name of the last D-Bus error from systemd; empty when there was none
        std::string supplicantError;  // the same from the supplicant
    };

    explicit LibraryLog(bool verbose);
    // Replaces the default logger by one that drops all records.
    ~LibraryLog();

    // The facts logged since the start or the last forgetHints().
    Hints hints() const;
    void forgetHints();

  private:
    class Sink;
    std::shared_ptr<Sink> sink_;
};

}  // namespace kaz::ctl
