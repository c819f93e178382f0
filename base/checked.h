// Failed system calls as exceptions.
#pragma once

#include <string>

namespace kaz {

// Returns the result of a function that reports failure as a negated errno, like those of libsystemd. Throws
// std::system_error if the result is negative.
int checked(int result, const char* call);

// Throws errno as std::system_error.
[[noreturn]] void throwErrno(const std::string& what);

}  // namespace kaz
