#pragma once

namespace kaz::test {

// Makes one allocation of this thread fail: operator new throws std::bad_alloc, once.
class FailingMemory {
  public:
    // `number` counts from 1, from here on.
    explicit FailingMemory(int number);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    FailingMemory(FailingMemory&&) = delete;
    FailingMemory& operator=(FailingMemory&&) = delete;

    // Whether there were that many.
    bool hasFailed() const;
};

}  // namespace kaz::test
