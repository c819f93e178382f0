#pragma once

#include "base/non_copyable.h"

#include "support/call_log/call_log.h"

#include <memory>
#include <string>

namespace kaz::test {

class BusThread;

// Listens in on a bus and notes, in the order in which the bus handles them, all method calls of all
// connections that begin their life after this, and the match rules they add and remove:
//
//   call com.example.Service /path the.interface.Member(...)
//   match the.interface.Member of com.example.Service /path
//   unmatch the.interface.Member of com.example.Service /path
//
// Calls of the bus itself other than for match rules on signals of others are left out.
class RecordingBus : NonCopyable {
  public:
    // Listens on return.
    RecordingBus(const std::string& address, CallLog& log);
    ~RecordingBus();

  private:
    std::unique_ptr<BusThread> connection_;
};

}  // namespace kaz::test
