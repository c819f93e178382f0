#pragma once

#include "base/non_copyable.h"

#include "support/call_log/call_log.h"

#include <memory>
#include <string>

namespace kaz::test {

class BusThread;

// Monitors a bus. Records all method calls of connections that are made later, and the match rules that they
// add and remove, in the order in which the bus handles them:
//
//   call com.example.Service /path the.interface.Member(...)
//   match the.interface.Member of com.example.Service /path
//   unmatch the.interface.Member of com.example.Service /path
//
// Other calls to the bus itself are left out, and so are match rules for its own signals.
class RecordingBus : NonCopyable {
  public:
    // Monitors the bus from its return.
    RecordingBus(const std::string& address, CallLog& log);
    ~RecordingBus();

  private:
    std::unique_ptr<BusThread> connection_;
};

}  // namespace kaz::test
