#pragma once

#include "base/file_descriptor.h"

namespace kaz {

// The two ends of a new pipe. They are closed in a program that is executed.
struct Pipe {
    // Throws std::system_error.
    Pipe();

    FileDescriptor reading;
    FileDescriptor writing;
};

}  // namespace kaz
