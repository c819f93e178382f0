#pragma once

#include "base/non_copyable.h"

namespace kaz::test {

// While it lives, operator new throws on the calling thread. A program that links this gets its own operator new.
class OutOfMemory : NonCopyable {
  public:
    OutOfMemory();
    ~OutOfMemory();

    // Throws at the next allocation of the calling thread only.
    static void once();
};

}  // namespace kaz::test
