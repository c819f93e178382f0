#pragma once

#include <string>

namespace kaz {

// "Permission denied" for EACCES or -EACCES, in every locale. "Unknown error N" for a number without a name.
// Callable from any thread.
std::string errnoText(int error);

}  // namespace kaz
