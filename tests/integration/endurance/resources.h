#pragma once

#include <cstddef>

namespace kaz::test {

// Open file descriptors of this process.
std::size_t openDescriptors();

// Bytes that are allocated and not freed.
std::size_t allocatedBytes();

// Resident bytes of this process, without those that the C library keeps for later allocations. Zero under a sanitizer,
// which keeps much memory for itself.
std::size_t residentBytes();

}  // namespace kaz::test
