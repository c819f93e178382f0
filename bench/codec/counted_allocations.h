#pragma once

#include <cstddef>

namespace kaz::bench {

// How often this thread has called the global operator new.
std::size_t allocations() noexcept;

}  // namespace kaz::bench
