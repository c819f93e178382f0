#include "simulator/supplicant/network_list.h"

#include <algorithm>
#include <utility>

namespace kaz::sim {

Network& NetworkList::add(NetworkConfig config) {
    const unsigned id = networks_.empty() ? 0 : networks_.back()->id + 1;
    return *networks_.emplace_back(std::make_unique<Network>(Network{.id = id, .config = std::move(config)}));
}

Network* NetworkList::find(unsigned id) {
    const auto found =
        std::find_if(networks_.begin(), networks_.end(), [id](const auto& n) { return n->id == id; });
    return found == networks_.end() ? nullptr : found->get();
}

const Network* NetworkList::find(unsigned id) const {
    const auto found =
        std::find_if(networks_.begin(), networks_.end(), [id](const auto& n) { return n->id == id; });
    return found == networks_.end() ? nullptr : found->get();
}

bool NetworkList::remove(unsigned id) {
    return std::erase_if(networks_, [id](const auto& n) { return n->id == id; }) > 0;
}

}  // namespace kaz::sim
