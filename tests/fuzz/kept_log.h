#pragma once

#include <string>
#include <vector>

namespace kaz::fuzz {

// What the library logged on one thread: the level, ": " and the text.
class KeptLog {
  public:
    // Takes the place of the process's default logger when it is first asked for.
    static KeptLog& instance();

    const std::vector<std::string>& texts() const { return texts_; }
    void clear() { texts_.clear(); }

  private:
    class Sink;

    KeptLog();

    std::vector<std::string> texts_;
};

}  // namespace kaz::fuzz
