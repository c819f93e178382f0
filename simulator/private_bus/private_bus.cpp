#include "simulator/private_bus/private_bus.h"

#include "base/file_descriptor.h"
#include "base/pipe.h"
#include "base/program.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

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

PrivateBus::PrivateBus() : address_("unix:path=" + (folder_ / "socket").string()) {
    writePolicy(folder_ / "bus.conf", address_);
    start();
}

PrivateBus::~PrivateBus() {
    kill();
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
    std::filesystem::remove(folder_ / "socket");
    start();
}

void PrivateBus::start() {
    Pipe ready;
    const FileDescriptor log = openLog(folder_ / "log");
    daemon_ = startProgram({.command = {"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
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

}  // namespace kaz::sim
