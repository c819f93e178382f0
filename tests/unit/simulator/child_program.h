#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kaz::sim::test {

// A program started with its standard output in a pipe. Killed when this object goes and it still runs.
class ChildProgram {
  public:
    explicit ChildProgram(const std::vector<std::string>& command);
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;
    ChildProgram(ChildProgram&&) = delete;
    ChildProgram& operator=(ChildProgram&&) = delete;

    // Up to the end of the line, without it; empty at the end of the output.
    std::string readLine() const;
    std::string readAll() const;
    void signal(int number) const;

    // The exit status; 128 and the signal's number when a signal ended it.
    int wait();

  private:
    pid_t process_ = -1;
    int output_ = -1;
};

}  // namespace kaz::sim::test
