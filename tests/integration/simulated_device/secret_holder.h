#pragma once

#include "base/non_copyable.h"

#include <wifi/types.h>

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace kaz::test {

// A separate process with a Manager, which runs commands, and whose memory can be searched. Commands reach it only
// through a socket, so secrets are neither in its arguments nor in its environment. Killed at the end of scope.
class SecretHolder : NonCopyable {
  public:
    enum class Own { wiped, kept };

    // Returns when its Manager follows the supplicant. Its log goes to `log`.
    explicit SecretHolder(const std::string& log);
    ~SecretHolder();

    // The process wipes its own copies of the settings' secrets before this returns, or keeps them.
    wifi::ConnectResult connect(const wifi::ConnectionSettings& settings, Own own = Own::wiped) const;
    // Requests a scan.
    void scan() const;
    // Blocks the Manager's thread in a callback.
    void block() const;
    // Adds as many requests as may wait.
    void fill() const;
    // The Manager's thread continues.
    void unblock() const;
    // Returns when the Manager has ended.
    void endManager() const;

    // Where in the process's memory a piece of the secret lies: the names of the regions, or "anonymous".
    std::vector<std::string> places(const std::string& secret) const;

  private:
    char ask(const std::string& request) const;

    int socket_ = -1;
    pid_t pid_ = -1;
};

}  // namespace kaz::test
