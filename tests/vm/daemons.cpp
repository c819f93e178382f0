#include "vm/daemons.h"

#include "base/file_descriptor.h"
#include "base/sd_bus/handles.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string_view>

namespace kaz::vm {
namespace {

constexpr const char* supplicant = "fi.w1.wpa_supplicant1";
constexpr const char* supplicantRoot = "/fi/w1/wpa_supplicant1";
constexpr const char* supplicantInterface = "fi.w1.wpa_supplicant1.Interface";

// One connection for all questions, and a new one when the bus has closed it.
sd_bus* systemBus() {
    static dbus::BusPtr bus;
    if (bus == nullptr || sd_bus_is_open(bus.get()) <= 0) {
        bus = dbus::connectTo("unix:path=/run/dbus/system_bus_socket");
    }
    return bus.get();
}

std::string interfacePath() {
    dbus::MessagePtr reply;
    const char* path = nullptr;
    const int result = sd_bus_call_method(systemBus(), supplicant, supplicantRoot, supplicant, "GetInterface",
                                          nullptr, dbus::out(reply), "s", "wlan0");
    return result >= 0 && sd_bus_message_read_basic(reply.get(), 'o', &path) > 0 ? path : "";
}

bool containsLine(const char* path, std::string_view wanted) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line == wanted) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string askSupplicant(const std::string& request) {
    constexpr timeval limit{10, 0};
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_un own{AF_UNIX, ""};
    const sockaddr_un other{AF_UNIX, "/run/wpa_supplicant/wlan0"};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    // With no more than its family, the kernel chooses an address, to which the answer is sent.
    ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own.sun_family);
    std::array<char, 16384> answer{};
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&other), sizeof other) != 0 ||
        ::send(socket.get(), request.data(), request.size(), 0) < 0) {
        return {};
    }
    const ssize_t size = ::recv(socket.get(), answer.data(), answer.size(), 0);
    return size > 0 ? std::string(answer.data(), static_cast<std::size_t>(size)) : std::string();
}

std::string value(const std::string& answer, const std::string& name) {
    std::istringstream lines(answer);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(name + '=', 0) == 0) {
            return line.substr(name.size() + 1);
        }
    }
    return {};
}

std::vector<std::vector<std::string>> table(const std::string& answer) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(answer);
    std::string line;
    for (std::getline(lines, line); std::getline(lines, line);) {
        std::istringstream fields(line);
        rows.emplace_back();
        for (std::string field; std::getline(fields, field, '\t');) {
            rows.back().push_back(field);
        }
    }
    return rows;
}

std::string unescaped(const std::string& printed) {
    std::string result;
    for (std::size_t i = 0; i < printed.size(); ++i) {
        if (printed.compare(i, 2, "\\x") == 0) {
            result += static_cast<char>(std::stoi(printed.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            i += printed[i] == '\\' ? 1U : 0U;
            result += printed[i];
        }
    }
    return result;
}

bool unitIsActive() {
    char* state = nullptr;
    const int result = sd_bus_get_property_string(
        systemBus(), "org.freedesktop.systemd1", "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice",
        "org.freedesktop.systemd1.Unit", "ActiveState", nullptr, &state);
    const std::unique_ptr<char, dbus::Release<&::free>> owner(state);
    return result >= 0 && std::string_view(state) == "active";
}

bool supplicantIsScanning() {
    const std::string path = interfacePath();
    int scanning = 0;
    return !path.empty() &&
           sd_bus_get_property_trivial(systemBus(), supplicant, path.c_str(), supplicantInterface, "Scanning",
                                       nullptr, 'b', &scanning) >= 0 &&
           scanning != 0;
}

bool isOnline() {
    return containsLine("/run/systemd/netif/state", "ONLINE_STATE=online");
}

bool linkIsUp() {
    unsigned flags = 0;
    std::ifstream("/sys/class/net/wlan0/flags") >> std::hex >> flags;
    return (flags & 1U) != 0;  // IFF_UP
}

bool isSwitchedOn() {
    return !containsLine("/home/root/.config/tessaline/kaz.conf", "wifi=off");
}

}  // namespace kaz::vm
