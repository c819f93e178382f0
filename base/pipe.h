#pragma once

#include "base/file_descriptor.h"

namespace kaz {

// The two ends of a new pipe. Both are close-on-exec.
struct Pipe {
    // Throws std::system_error.
    Pipe();

    FileDescriptor reading;
    FileDescriptor writing;
};

}  // namespace kaz
