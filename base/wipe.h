// Keeping secrets out of freed memory.
#pragma once

#include <string>
#include <utility>

namespace kaz {

// Overwrites all memory that the string holds, unused capacity included, and empties it. The compiler cannot optimise
// this away.
void wipe(std::string& secret) noexcept;

// A string that overwrites its memory when it is destroyed.
class WipedString {
  public:
    explicit WipedString(std::string&& text) noexcept : text_(std::move(text)) { wipe(text); }
    ~WipedString() { wipe(text_); }
    WipedString(const WipedString&) = default;
    WipedString(WipedString&& other) noexcept : WipedString(std::move(other.text_)) {}
    WipedString& operator=(const WipedString&) = delete;
    WipedString& operator=(WipedString&&) = delete;

    const std::string& get() const noexcept { return text_; }

  private:
    std::string text_;
};

}  // namespace kaz
