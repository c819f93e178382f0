#include "simulator/device/real_service.h"

#include "simulator/bus/vtable.h"
#include "simulator/device/confined_process.h"

#include <signal.h>
#include <sys/wait.h>

#include <fstream>
#include <string_view>
#include <utility>

namespace kaz::sim {
namespace {

constexpr const char* supplicantName = "fi.w1.wpa_supplicant1";
// As systemd's default. A busy machine may take long to start the daemon.
constexpr std::chrono::seconds patience{90};

// The text of "State" in a PropertiesChanged signal of the interface; empty if it is missing.
std::string stateIn(sd_bus_message* signal) {
    const char* interface = nullptr;
    checked(sd_bus_message_read(signal, "s", &interface), "read");
    std::string state;
    readEntries(signal, [&](std::string_view name) {
        if (name == "State") {
            const char* text = nullptr;
            checked(sd_bus_message_read(signal, "v", "s", &text), "read");
            state = text;
        } else {
            checked(sd_bus_message_skip(signal, "v"), "skip");
        }
    });
    return state;
}

}  // namespace

template <void (RealService::*Handle)(sd_bus_message*)>
int RealService::handler(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept {
    vtable::guarded(error, [&] { (static_cast<RealService*>(self)->*Handle)(signal); });
    return 0;
}

RealService::RealService(const Environment& environment, std::filesystem::path configFile,
                         std::function<void(bool)> linkChanged)
    : environment_(environment),
      configFile_(std::move(configFile)),
      linkChanged_(std::move(linkChanged)),
      connection_(environment, "") {
    if (configFile_.empty()) {
        folder_.emplace("kaz-supplicant-");
        configFile_ = *folder_ / "wpa_supplicant.conf";
    }
    if (!std::filesystem::exists(configFile_)) {
        std::ofstream(configFile_) << "ap_scan=0\nupdate_config=1\n";
    }
    ownerMatch_ = hear("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
                       handler<&RealService::nameOwnerChanged>);
    propertiesMatch_ = hear(supplicantName, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                            handler<&RealService::propertiesChanged>);
}

RealService::~RealService() {
    end_.reset();
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

void RealService::start(std::function<void()> ready) {
    ready_ = std::move(ready);
    launch();
    impatience_ = environment_.scheduler.afterRealTime(patience, [this] { kill(); });
}

void RealService::stop(std::function<void()> gone) {
    if (process_ < 0) {
        gone();
        return;
    }
    ready_ = nullptr;
    gone_ = std::move(gone);
    ::kill(process_, SIGTERM);
    impatience_ = environment_.scheduler.afterRealTime(patience, [this] { ::kill(process_, SIGKILL); });
}

void RealService::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
    }
}

void RealService::launch() {
    // The namespace has no other network, and loses both ends of the pair when its last process ends.
    const std::string script =
        "ip -batch - <<'LINES' && exec wpa_supplicant -u -i kaz0 -D wired -c \"$1\" >/dev/null\n"
        "link add kaz0 type veth peer name kaz1\nlink set kaz0 up\nlink set kaz1 up\nLINES\n";
    process_ = startConfined({"sh", "-c", script, "sh", configFile_.string()},
                             {{"DBUS_SYSTEM_BUS_ADDRESS", environment_.busAddress}});
    checked(sd_event_add_child(
                environment_.scheduler.event(), dbus::out(end_), process_, WEXITED,
                [](sd_event_source*, const siginfo_t* end, void* self) {
                    static_cast<RealService*>(self)->ended(end->si_code == CLD_EXITED && end->si_status == 0);
                    return 0;
                },
                this),
            "sd_event_add_child");
}

void RealService::ended(bool cleanly) {
    process_ = -1;
    end_.reset();
    impatience_.cancel();
    ready_ = nullptr;
    linkChanged_(false);
    if (const auto gone = std::exchange(gone_, nullptr)) {
        gone();
    } else {
        exited(cleanly);
    }
}

Slot RealService::hear(const char* sender, const char* interface, const char* member,
                       sd_bus_message_handler_t callback) {
    Slot slot;
    checked(sd_bus_match_signal(connection_.bus(), dbus::out(slot), sender, nullptr, interface, member,
                                callback, this),
            member);
    return slot;
}

void RealService::nameOwnerChanged(sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* owner = nullptr;
    checked(sd_bus_message_read(signal, "sss", &name, &before, &owner), "read");
    if (std::string_view(name) != supplicantName) {
        return;
    }
    if (std::string_view(owner).empty()) {
        linkChanged_(false);
    } else if (const auto ready = std::exchange(ready_, nullptr)) {
        impatience_.cancel();
        ready();
    }
}

void RealService::propertiesChanged(sd_bus_message* signal) {
    const std::string state = stateIn(signal);
    if (!state.empty()) {
        linkChanged_(state == "completed");
    }
}

}  // namespace kaz::sim
