#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "inspection/facts.h"

namespace kaz::inspection {

// Asks the kernel about its radios: the power saving of each wireless link, and the country.
void readRadios(Facts& facts);

// The country whose rules the kernel applies; "00" is the world.
Fact<std::string> readKernelCountry();

// How long the link of a wireless interface to its access point is up. Nothing without a link, and from a driver that
// does not tell it.
std::optional<std::chrono::seconds> readLinkAge(int interfaceIndex);

}  // namespace kaz::inspection
