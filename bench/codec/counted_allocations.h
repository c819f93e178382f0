#pragma once

#include <cstddef>

namespace kaz::bench {

// The number of calls of the global operator new by this thread.
std::size_t allocations() noexcept;

}  // namespace kaz::bench
