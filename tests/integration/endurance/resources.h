#pragma once

#include <cstddef>

namespace kaz::test {

// Open file descriptors of this process.
std::size_t openDescriptors();

// Bytes that are allocated and not freed.
std::size_t allocatedBytes();

}  // namespace kaz::test
