#pragma once

#include "base/journal.h"

#include <functional>
#include <string>
#include <string_view>

namespace kaz::test {

// Calls in order, each as a line of text. Any thread may add and read.
class CallLog : public Journal<std::string> {
  public:
    using Calls = Entries;

    Calls calls() const { return entries(); }

    // Blocks until the predicate is true for the calls since the last take(). Returns false on timeout.
    bool waitFor(const std::function<bool(const Calls&)>& predicate) const;

    // Blocks until a call contains this text.
    bool waitForCall(std::string_view part) const;
};

}  // namespace kaz::test
