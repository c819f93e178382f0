#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kaz::test {

// The bytes of one direction of a connection, divided into the lines of the authentication and the messages after it.
class WireStream {
  public:
    void add(std::string_view bytes) { bytes_ += bytes; }

    // Removes and returns what comes first. Empty while it is incomplete.
    std::optional<std::string> nextLine();
    std::optional<std::string> nextMessage();

  private:
    std::string take(std::size_t size);

    std::string bytes_;
};

}  // namespace kaz::test
