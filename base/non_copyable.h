#pragma once

namespace kaz {

// Base of classes that are neither copied nor moved.
class NonCopyable {
  public:
    NonCopyable(const NonCopyable&) = delete;
    NonCopyable(NonCopyable&&) = delete;
    NonCopyable& operator=(const NonCopyable&) = delete;
    NonCopyable& operator=(NonCopyable&&) = delete;

  protected:
    NonCopyable() = default;
    ~NonCopyable() = default;
};

}  // namespace kaz
