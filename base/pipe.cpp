#include "base/pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

#include "base/checked.h"

namespace kaz {

Pipe::Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throwErrno("pipe2");
    }
    reading = FileDescriptor(ends[0]);
    writing = FileDescriptor(ends[1]);
}

}  // namespace kaz
