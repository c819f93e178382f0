#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/file_descriptor.h"
#include "base/non_copyable.h"

namespace kaz::sim::test {

// A program started with its standard output in a pipe. It is killed with this object if it still runs.
class ChildProgram : NonCopyable {
  public:
    explicit ChildProgram(const std::vector<std::string>& command);
    ~ChildProgram();

    // Up to the end of the line, without it; empty at the end of the output.
    std::string readLine() const;
    std::string readAll() const;
    void signal(int number) const;

    // The exit status as a shell reports it.
    int wait();

  private:
    pid_t process_ = -1;
    FileDescriptor output_;
};

}  // namespace kaz::sim::test
