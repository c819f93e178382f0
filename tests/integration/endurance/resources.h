#pragma once

#include <cstddef>
#include <optional>

namespace kaz::test {

// Open file descriptors of this process.
std::size_t openDescriptors();

// Bytes that are allocated and not freed. Nothing under a sanitizer, whose allocator does not tell.
std::optional<std::size_t> allocatedBytes();

}  // namespace kaz::test
