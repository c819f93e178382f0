// Failed system calls as exceptions.
#pragma once

#include <string>

namespace kaz {

// Returns the result of a function that reports failure as a negated errno, as libsystemd's do. Throws
// std::system_error when it is negative.
int checked(int result, const char* call);

// Throws errno as std::system_error.
[[noreturn]] void throwErrno(const std::string& what);

}  // namespace kaz
