#include "bench/manager/published_list.h"

#include <wifi/manager.h>

#include <future>
#include <memory>

namespace kaz::bench {

void awaitList(wifi::Manager& manager) {
    const auto published = std::make_shared<std::promise<void>>();
    manager.onNetworksListChanged([published] { published->set_value(); });
    // The list may have been published before the callback was registered.
    if (manager.networks().empty()) {
        published->get_future().wait();
    }
    manager.onNetworksListChanged({});
}

}  // namespace kaz::bench
