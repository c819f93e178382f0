#pragma once

#include "base/non_copyable.h"

#include <cstddef>
#include <string_view>

namespace kaz::test {

// Counts the blocks that are given back to the allocator with a secret still in them. A program that links
// this gets its own operator new and delete. One watch at a time; any thread may free.
class FreedMemoryWatch : NonCopyable {
  public:
    // The secret is not copied and has to outlive the watch. Not to be too short, or it is found by chance.
    explicit FreedMemoryWatch(std::string_view secret);
    ~FreedMemoryWatch();

    std::size_t leaks() const;
};

}  // namespace kaz::test
