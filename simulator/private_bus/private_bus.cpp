#include "simulator/private_bus/private_bus.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace kaz::sim {
namespace {

constexpr const char* policy =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>%ADDRESS%</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
  </policy>
</busconfig>
)";

std::string makeFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kaz-bus-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "cannot make " + pattern);
    }
    return pattern;
}

void writePolicy(const std::string& file, const std::string& address) {
    std::string text = policy;
    const std::string placeholder = "%ADDRESS%";
    text.replace(text.find(placeholder), placeholder.size(), address);
    std::ofstream(file) << text;
}

// The daemon's complaints are worth reading only when it does not start.
int openLog(const std::string& file) {
    constexpr mode_t ownerOnly = 0600;
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, ownerOnly);
}

std::string contentsOf(const std::string& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

[[noreturn]] void execDaemon(pid_t parent, const std::string& configArgument, int readyFd, int logFd) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(126);  // the parent died before it could be watched
    }
    ::dup2(logFd, STDERR_FILENO);
    ::setsid();  // a Ctrl-C at the terminal is not meant for the bus
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    const std::string printAddress = "--print-address=" + std::to_string(readyFd);
    ::execlp("dbus-daemon", "dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", configArgument.c_str(),
             printAddress.c_str(), nullptr);
    ::_exit(127);
}

}  // namespace

PrivateBus::PrivateBus() : folder_(makeFolder()), address_("unix:path=" + folder_ + "/socket") {
    try {
        writePolicy(folder_ + "/bus.conf", address_);
        start();
    } catch (...) {
        removeFolder();
        throw;
    }
}

PrivateBus::~PrivateBus() {
    kill();
    removeFolder();
}

void PrivateBus::removeFolder() const noexcept {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PrivateBus::becomeSystemBus() const {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address_.c_str(), 1);
}

void PrivateBus::kill() {
    if (daemon_ > 0) {
        ::kill(daemon_, SIGKILL);
        ::waitpid(daemon_, nullptr, 0);
        daemon_ = -1;
    }
}

void PrivateBus::restart() {
    kill();
    std::filesystem::remove(folder_ + "/socket");
    start();
}

void PrivateBus::start() {
    std::array<int, 2> ready{};
    if (::pipe2(ready.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    const std::string configArgument = "--config-file=" + folder_ + "/bus.conf";
    const int log = openLog(folder_ + "/log");
    const pid_t parent = ::getpid();
    daemon_ = ::fork();
    if (daemon_ == 0) {
        ::fcntl(ready[1], F_SETFD, 0);
        execDaemon(parent, configArgument, ready[1], log);
    }
    ::close(ready[1]);
    ::close(log);
    char first = 0;
    const bool listening = daemon_ > 0 && ::read(ready[0], &first, 1) == 1;
    ::close(ready[0]);
    if (!listening) {
        kill();
        throw std::runtime_error("dbus-daemon does not start; is it installed? " +
                                 contentsOf(folder_ + "/log"));
    }
}

}  // namespace kaz::sim
