#pragma once

#include <string>
#include <vector>

namespace kaz::fuzz {

// What the library logged on one thread: the level, ": " and the text.
class KeptLog {
  public:
    // The first call replaces the process's default logger.
    static KeptLog& instance();

    const std::vector<std::string>& texts() const { return texts_; }
    void clear() { texts_.clear(); }

  private:
    class Sink;

    KeptLog();

    std::vector<std::string> texts_;
};

}  // namespace kaz::fuzz
