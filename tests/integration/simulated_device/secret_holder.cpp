#include "integration/simulated_device/secret_holder.h"

#include "base/checked.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <sstream>

namespace kaz::test {
namespace {

void require(bool fine, const char* what) {
    if (!fine) {
        throwErrno(what);
    }
}

struct Region {
    off_t begin = 0;
    off_t end = 0;
    std::string name;
};

std::vector<Region> readableRegions(pid_t process) {
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    std::vector<Region> regions;
    for (std::string line; std::getline(maps, line);) {
        Region region;
        char dash = 0;
        std::string rights;
        std::string offset;
        std::string device;
        std::string inode;
        std::istringstream(line) >> std::hex >> region.begin >> dash >> region.end >> rights >> offset >>
            device >> inode >> region.name;
        // The kernel's own pages, which cannot be read in this way.
        const bool ofTheKernel = region.name.rfind("[v", 0) == 0;
        if (!rights.empty() && rights.front() == 'r' && !ofTheKernel) {
            regions.push_back(std::move(region));
        }
    }
    return regions;
}

// The content of a region; shorter if the region was unmapped while it was read.
std::string contentOf(int memory, const Region& region) {
    std::string content(static_cast<std::size_t>(region.end - region.begin), '\0');
    std::size_t count = 0;
    while (count < content.size()) {
        const ssize_t got = ::pread(memory, content.data() + count, content.size() - count,
                                    region.begin + static_cast<off_t>(count));
        if (got <= 0) {
            break;
        }
        count += static_cast<std::size_t>(got);
    }
    content.resize(count);
    return content;
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

// The allocator overwrites parts of freed memory, so only a piece of the secret may remain.
std::vector<std::string_view> piecesOf(std::string_view secret) {
    constexpr std::size_t size = 8;
    if (secret.size() <= size) {
        return {secret};
    }
    std::vector<std::string_view> pieces;
    for (std::size_t at = 0; at + size < secret.size(); at += size) {
        pieces.push_back(secret.substr(at, size));
    }
    pieces.push_back(secret.substr(secret.size() - size));
    return pieces;
}

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

wifi::ConnectResult SecretHolder::connect(const wifi::ConnectionSettings& settings, Own own) const {
    std::string request = own == Own::kept ? "keep" : "connect";
    for (const std::string& part :
         {std::to_string(static_cast<int>(settings.securityMode)), std::string(settings.hidden ? "1" : "0"),
          settings.ssid, settings.password, settings.identity, settings.anonymousIdentity}) {
        request += '\n' + part;
    }
    return static_cast<wifi::ConnectResult>(ask(request));
}

std::vector<std::string> SecretHolder::places(const std::string& secret) const {
    const FileDescriptor memory(
        ::open(("/proc/" + std::to_string(pid_) + "/mem").c_str(), O_RDONLY | O_CLOEXEC));
    require(memory.isOpen(), "cannot read the memory of another process");
    std::vector<std::string> found;
    for (const Region& region : readableRegions(pid_)) {
        const std::string content = contentOf(memory.get(), region);
        const auto pieces = piecesOf(secret);
        if (std::any_of(pieces.begin(), pieces.end(),
                        [&](std::string_view piece) { return content.find(piece) != std::string::npos; })) {
            found.push_back(region.name.empty() ? "anonymous" : region.name);
        }
    }
    return found;
}

}  // namespace kaz::test
