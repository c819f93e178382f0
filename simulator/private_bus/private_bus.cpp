#include "simulator/private_bus/private_bus.h"

#include "base/file_descriptor.h"
#include "base/pipe.h"
#include "base/program.h"
#include "base/sd_bus/handles.h"
#include "base/temporary_folder.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <utility>

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

void writePolicy(const std::string& file, const std::string& address) {
    std::string text = policy;
    const std::string placeholder = "%ADDRESS%";
    text.replace(text.find(placeholder), placeholder.size(), address);
    std::ofstream(file) << text;
}

// The daemon's error output matters only if it does not start.
FileDescriptor openLog(const std::string& file) {
    constexpr mode_t ownerOnly = 0600;
    return FileDescriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, ownerOnly));
}

std::string contentsOf(const std::string& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

class PrivateBus::Daemon : NonCopyable {
  public:
    Daemon() {
        writePolicy(folder_ / "bus.conf", address_);
        start();
    }
    ~Daemon() { kill(); }

    const std::string& address() const noexcept { return address_; }

    void kill() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            process_ = -1;
        }
    }

    void restart() {
        kill();
        std::filesystem::remove(folder_ / "socket");
        start();
    }

    // Whether it listens, as far as can be told without asking it.
    bool isAlive() const {
        siginfo_t end{};
        return process_ > 0 && std::filesystem::exists(folder_ / "socket") &&
               ::waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WSTOPPED | WNOHANG | WNOWAIT) ==
                   0 &&
               end.si_pid == 0;
    }

    bool hasClients() const;

  private:
    void start();

    TemporaryFolder folder_{"kaz-bus-"};
    std::string address_ = "unix:path=" + (folder_ / "socket").string();
    pid_t process_ = -1;
};

void PrivateBus::Daemon::start() {
    Pipe ready;
    const FileDescriptor log = openLog(folder_ / "log");
    process_ = startProgram({.command = {"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                                         "--config-file=" + (folder_ / "bus.conf").string(),
                                         "--print-address=" + std::to_string(ready.writing.get())},
                             .error = log.get(),
                             .inherited = ready.writing.get(),
                             .deathSignal = SIGKILL,
                             .newSession = true});
    ready.writing = FileDescriptor();
    char first = 0;
    if (::read(ready.reading.get(), &first, 1) != 1) {
        kill();
        throw std::runtime_error("dbus-daemon does not start; is it installed? " +
                                 contentsOf(folder_ / "log"));
    }
}

bool PrivateBus::Daemon::hasClients() const {
    const dbus::BusPtr bus = dbus::connectTo(address_);
    dbus::MessagePtr names;
    checked(sd_bus_call_method(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "ListNames", nullptr, dbus::out(names), ""),
            "ListNames");
    checked(sd_bus_message_enter_container(names.get(), 'a', "s"), "enter");
    constexpr int own = 2;  // the bus's name and that of the connection above
    int count = 0;
    while (checked(sd_bus_message_skip(names.get(), "s"), "skip") > 0) {
        ++count;
    }
    return count > own;
}

// The daemon that is kept.
class PrivateBus::Spare : NonCopyable {
  public:
    // A forked process that ends leaves the daemon to its parent.
    ~Spare() {
        if (::getpid() != owner_) {
            static_cast<void>(daemon_.release());
        }
    }

    std::unique_ptr<Daemon> take() {
        const std::lock_guard lock(mutex_);
        if (daemon_ && daemon_->isAlive()) {
            return std::move(daemon_);
        }
        return std::make_unique<Daemon>();
    }

    void keep(std::unique_ptr<Daemon> daemon) noexcept {
        try {
            if (daemon->isAlive() && !daemon->hasClients()) {
                const std::lock_guard lock(mutex_);
                daemon_ = std::move(daemon);
            }
        } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): one that does not answer ends
        }
    }

  private:
    std::mutex mutex_;
    std::unique_ptr<Daemon> daemon_;
    pid_t owner_ = ::getpid();
};

PrivateBus::Spare& PrivateBus::spare() {
    static Spare spare;
    return spare;
}

PrivateBus::PrivateBus() : daemon_(spare().take()) {}

PrivateBus::~PrivateBus() {
    spare().keep(std::move(daemon_));
}

const std::string& PrivateBus::address() const noexcept {
    return daemon_->address();
}

void PrivateBus::becomeSystemBus() const {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address().c_str(), 1);
}

void PrivateBus::kill() {
    daemon_->kill();
}

void PrivateBus::restart() {
    daemon_->restart();
}

}  // namespace kaz::sim
