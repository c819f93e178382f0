#pragma once

#include "base/non_copyable.h"

#include "base/temporary_folder.h"

#include <string>

namespace kaz::test {

// A system bus that lets the loop connect, and then says nothing. One connection at a time.
class MuteBroker : NonCopyable {
  public:
    MuteBroker();
    ~MuteBroker();

    // Waits for the loop and for the first byte that it sends. Returns false on timeout.
    bool hears();

    // Disconnects the loop.
    void hangUp();

  private:
    TemporaryFolder folder_;
    std::string path_;
    int listener_;
    int connection_ = -1;
};

}  // namespace kaz::test
