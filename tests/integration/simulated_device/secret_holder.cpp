#include "integration/simulated_device/secret_holder.h"

#include "base/checked.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace kaz::test {
namespace {

void require(bool fine, const char* what) {
    if (!fine) {
        throwErrno(what);
    }
}

// This process's environment and LD_BIND_NOW: all functions are bound at the start, as in the installed library. Lazy
// binding saves the processor's registers on the stack, and the last copied bytes would remain there.
class Surroundings {
  public:
    Surroundings() {
        for (char** variable = environ; *variable != nullptr; ++variable) {
            pointers_.push_back(*variable);
        }
        pointers_.push_back(bindNow_.data());
        pointers_.push_back(nullptr);
    }
    char* const* get() const { return pointers_.data(); }

  private:
    std::string bindNow_ = "LD_BIND_NOW=1";
    std::vector<char*> pointers_;
};

}  // namespace

SecretHolder::SecretHolder(const std::string& log) {
    std::array<int, 2> ends{};
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) == 0, "socketpair");
    socket_ = FileDescriptor(ends[0]);
    FileDescriptor theirs(ends[1]);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                       0600);
    std::string program = KAZ_SECRET_HOLDER;
    const std::array<char*, 2> arguments{program.data(), nullptr};
    const int error =
        ::posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments.data(), Surroundings().get());
    ::posix_spawn_file_actions_destroy(&actions);
    theirs = FileDescriptor();
    errno = error;
    require(error == 0, "posix_spawn");
    errno = ETIME;
    require(ask("up") != 0, "waiting for the supplicant");
}

SecretHolder::~SecretHolder() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
}

char SecretHolder::ask(const std::string& request) const {
    require(::send(socket_.get(), request.data(), request.size(), MSG_NOSIGNAL) >= 0, "send");
    char answer = 0;
    const ssize_t count = ::recv(socket_.get(), &answer, 1, 0);
    errno = count == 0 ? ECONNRESET : errno;
    require(count == 1, "recv");
    return answer;
}

wifi::ConnectResult SecretHolder::connect(const wifi::ConnectionSettings& settings, Own own,
                                          const wifi::Certificates& certificates) const {
    std::string request = own == Own::kept ? "keep" : "connect";
    for (const std::string& part :
         {std::to_string(static_cast<int>(settings.securityMode)), std::string(settings.hidden ? "1" : "0"),
          settings.ssid, settings.password, settings.identity, settings.anonymousIdentity,
          certificates.keyFile, certificates.keyPassword}) {
        request += '\n' + part;
    }
    return static_cast<wifi::ConnectResult>(ask(request));
}

}  // namespace kaz::test
