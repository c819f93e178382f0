#pragma once

#include <exception>
#include <utility>

#include "kazwifictl/failure.h"

namespace kaz::ctl {

// Leaves a command that cannot do what it was asked for.
class CommandFailed : public std::exception {
  public:
    explicit CommandFailed(Failure failure) : failure_(std::move(failure)) {}
    const Failure& failure() const { return failure_; }
    const char* what() const noexcept override { return failure_.what.c_str(); }

  private:
    Failure failure_;
};

// Leaves a command because of a signal.
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int signal) : signal_(signal) {}
    int signal() const { return signal_; }
    const char* what() const noexcept override { return "interrupted"; }

  private:
    int signal_;
};

}  // namespace kaz::ctl
