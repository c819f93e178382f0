#pragma once

#include <chrono>

#include "base/non_copyable.h"

namespace kaz::wifi {

// The clock of the connection tracker. Monotonic; zero means never.
class TimeProvider : NonCopyable {
  public:
    virtual std::chrono::steady_clock::time_point get() = 0;
    virtual ~TimeProvider() = default;
};

// The real clock. Callable from any thread.
class TimeProviderWallClock final : public TimeProvider {
  public:
    std::chrono::steady_clock::time_point get() override;
};

}  // namespace kaz::wifi
