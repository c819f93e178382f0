#pragma once

namespace kaz::test {

// Throws std::runtime_error with `what` for a negative sd-bus return code.
void requireSuccess(int result, const char* what);

}  // namespace kaz::test
