#pragma once

#include <string>

namespace kaz::test {

// A system bus that lets the loop connect, and then says nothing. One connection at a time.
class MuteBroker {
  public:
    MuteBroker();
    ~MuteBroker();
    MuteBroker(const MuteBroker&) = delete;
    MuteBroker& operator=(const MuteBroker&) = delete;
    MuteBroker(MuteBroker&&) = delete;
    MuteBroker& operator=(MuteBroker&&) = delete;

    // Waits for the loop and for the first byte that it says. False when it does not come until the limit passes.
    bool hears();

    // Throws the loop out.
    void hangUp();

  private:
    std::string path_;
    int listener_;
    int connection_ = -1;
};

}  // namespace kaz::test
