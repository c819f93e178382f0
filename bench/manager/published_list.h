#pragma once

namespace kaz::wifi {
class Manager;
}

namespace kaz::bench {

// Returns when the Manager has published its first list. Uses its callback for changes of the list.
void awaitList(wifi::Manager& manager);

}  // namespace kaz::bench
