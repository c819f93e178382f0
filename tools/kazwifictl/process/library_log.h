#pragma once

#include "base/non_copyable.h"

namespace kaz::ctl {

// Replaces the process's default logger, to which the library writes. With `verbose`, writes its records to stderr.
class LibraryLog : NonCopyable {
  public:
    explicit LibraryLog(bool verbose);
    // Replaces the default logger by one that drops all records.
    ~LibraryLog();
};

}  // namespace kaz::ctl
