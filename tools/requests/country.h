#pragma once

#include <chrono>
#include <string>

#include "requests/change.h"

namespace kaz::requests {

// Sets the country of the interface that the supplicant uses first, two capital letters, and lets the supplicant save
// it. Returns after the limit when the supplicant does not answer.
Change setCountry(const std::string& country, std::chrono::milliseconds limit);

}  // namespace kaz::requests
