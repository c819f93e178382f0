#pragma once

#include <cstddef>

namespace kaz::test {

// Open file descriptors of this process.
std::size_t openDescriptors();

// Bytes that are allocated and not freed.
std::size_t allocatedBytes();

// Bytes of this process that are in memory, without those that the C library keeps for allocations to come. Zero under a
// sanitizer, which keeps much for itself.
std::size_t residentBytes();

}  // namespace kaz::test
