#pragma once

#include "base/non_copyable.h"

#include <cstddef>
#include <string_view>

namespace kaz::test {

// Counts freed memory blocks that still contain a secret. A program that links this gets its own operator new
// and delete. One watch at a time; any thread may free.
class FreedMemoryWatch : NonCopyable {
  public:
    // The secret is not copied and must outlive the watch. A short secret may be found by chance.
    explicit FreedMemoryWatch(std::string_view secret);
    ~FreedMemoryWatch();

    std::size_t leaks() const;
};

}  // namespace kaz::test
