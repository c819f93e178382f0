#pragma once

#include "base/file_descriptor.h"
#include "base/non_copyable.h"
#include "support/process/memory.h"

#include <wifi/certificates.h>
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
    wifi::ConnectResult connect(const wifi::ConnectionSettings& settings, Own own = Own::wiped,
                                const wifi::Certificates& certificates = {}) const;
    // Requests a scan.
    void scan() const { ask("scan"); }
    // Blocks the Manager's thread in a callback.
    void block() const { ask("block"); }
    // Adds as many requests as may wait.
    void fill() const { ask("fill"); }
    // The Manager's thread continues.
    void unblock() const { ask("unblock"); }
    // Returns when the Manager has ended.
    void endManager() const { ask("end"); }

    // Where in the process's memory a piece of the secret lies: the names of the regions, or "anonymous".
    std::vector<std::string> places(const std::string& secret) const { return placesInMemory(pid_, secret); }

  private:
    char ask(const std::string& request) const;

    FileDescriptor socket_;
    pid_t pid_ = -1;
};

}  // namespace kaz::test
