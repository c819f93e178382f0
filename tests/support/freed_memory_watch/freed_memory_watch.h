#pragma once

#include <cstddef>
#include <string_view>

namespace kaz::test {

// Counts the blocks that are given back to the allocator with a secret still in them. A program that links
// this gets its own operator new and delete. One watch at a time; any thread may free.
class FreedMemoryWatch {
  public:
    // The secret is not copied and has to outlive the watch. Not to be too short, or it is found by chance.
    explicit FreedMemoryWatch(std::string_view secret);
    ~FreedMemoryWatch();
    FreedMemoryWatch(const FreedMemoryWatch&) = delete;
    FreedMemoryWatch& operator=(const FreedMemoryWatch&) = delete;
    FreedMemoryWatch(FreedMemoryWatch&&) = delete;
    FreedMemoryWatch& operator=(FreedMemoryWatch&&) = delete;

    std::size_t leaks() const;
};

}  // namespace kaz::test
