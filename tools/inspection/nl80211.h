#pragma once

#include "inspection/facts.h"

namespace kaz::inspection {

// Asks the kernel about its radios: the power saving of each wireless link, and the country.
void readRadios(Facts& facts);

}  // namespace kaz::inspection
