// Creates a Manager and waits until standard input ends.
//
//   kazwifi_client NETWORK-COUNT     the number of networks to wait for; 0: do not wait
#include "bench/whole_process/client.h"

#include <spdlog/spdlog.h>
#include <wifi/manager.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>

int main(int argc, char** argv) {
    spdlog::set_level(spdlog::level::off);
    const bool awaitsList = argc == 2 && std::atoi(argv[1]) > 0;
    const long before = kaz::bench::privateKilobytes();
    kaz::wifi::Manager manager;
    const auto published = std::make_shared<std::promise<void>>();
    manager.onNetworksListChanged([published] { published->set_value(); });
    if (awaitsList && manager.networks().empty()) {
        published->get_future().wait();
    }
    kaz::bench::reportReady(before);
    while (std::getchar() != EOF) {
    }
    return 0;
}
