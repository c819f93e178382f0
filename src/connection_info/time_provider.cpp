#include "connection_info/time_provider.h"

namespace kaz::wifi {

std::chrono::steady_clock::time_point TimeProviderWallClock::get() {
    return std::chrono::steady_clock::now();
}

}  // namespace kaz::wifi
