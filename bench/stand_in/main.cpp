// Replaces wpa_supplicant, systemd and networkd on the given bus. It sends the same prepared replies to every
// client, with the least cost that sd-bus allows. Prints a line when it has its names, and ends with its
// parent.
#include "bench/stand_in/bss_dictionary.h"
#include "bench/stand_in/canned_replies.h"
#include "bench/stand_in/control.h"

#include <sys/prctl.h>
#include <systemd/sd-bus.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string_view>

namespace {

using namespace kaz::bench;

int onMessage(sd_bus_message* message, void* context, sd_bus_error* /*error*/) {
    auto& world = *static_cast<World*>(context);
    const char* interface = sd_bus_message_get_interface(message);
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0 || interface == nullptr) {
        return 0;
    }
    if (std::string_view(interface) == controlInterface) {
        control(message, world);
    } else if (!world.hanging) {
        check(answer(message, world));
    }
    return 1;
}

void serve(const char* address) {
    sd_bus* bus = nullptr;
    World world;
    check(sd_bus_new(&bus));
    check(sd_bus_set_address(bus, address));
    check(sd_bus_set_bus_client(bus, 1));
    check(sd_bus_start(bus));
    check(sd_bus_add_filter(bus, nullptr, &onMessage, &world));
    for (const char* name :
         {"fi.w1.wpa_supplicant1", "org.freedesktop.systemd1", "org.freedesktop.network1"}) {
        check(sd_bus_request_name(bus, name, 0));
    }
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        if (check(sd_bus_process(bus, nullptr)) == 0) {
            check(sd_bus_wait(bus, UINT64_MAX));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        serve(argc == 2 ? argv[1] : "");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_stand_in: %s\n", error.what());
    }
    return 1;
}
