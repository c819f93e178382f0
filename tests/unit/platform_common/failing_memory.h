#pragma once

#include "base/non_copyable.h"

namespace kaz::test {

// Makes one allocation of this thread fail: operator new throws std::bad_alloc, once.
class FailingMemory : NonCopyable {
  public:
    // `number` counts from 1, from here on.
    explicit FailingMemory(int number);
    ~FailingMemory();

    // Whether that allocation was made, and failed.
    bool hasFailed() const;
};

}  // namespace kaz::test
