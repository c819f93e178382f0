// A private bus until standard input ends, by default with the stand-in. Prints the bus's address.
//
//   bench_world BSS-COUNT     -1: a bus without services
#include "bench/stand_in/stand_in_process.h"
#include "simulator/private_bus/private_bus.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>

int main(int argc, char** argv) {
    try {
        const kaz::sim::PrivateBus bus;
        std::optional<kaz::bench::StandInProcess> standIn;
        const int bssCount = argc == 2 ? std::atoi(argv[1]) : 0;
        if (bssCount >= 0) {
            standIn.emplace(bus.address());
            standIn->setBssCount(static_cast<unsigned>(bssCount));
        }
        std::printf("%s\n", bus.address().c_str());
        std::fflush(stdout);
        while (std::getchar() != EOF) {
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_world: %s\n", error.what());
        return 1;
    }
}
