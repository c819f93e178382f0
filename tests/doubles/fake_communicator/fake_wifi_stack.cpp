#include "doubles/fake_communicator/fake_wifi_stack.h"

#include <algorithm>
#include <utility>

namespace kaz::test {

std::size_t FakeWifiStack::configure(std::optional<std::string> ssid) {
    networks.push_back({++lastId_, std::move(ssid)});
    return lastId_;
}

FakeWifiStack::Network* FakeWifiStack::find(std::size_t id) {
    const auto found = std::find_if(networks.begin(), networks.end(),
                                    [&](const Network& network) { return network.id == id; });
    return found == networks.end() ? nullptr : &*found;
}

bool FakeWifiStack::record(const std::string& operation, const std::string& arguments) {
    std::string call = operation;
    if (!arguments.empty()) {
        call += '(' + arguments + ')';
    }
    const bool succeeds = !failing.contains(operation) && !failing.contains(call);
    if (!succeeds) {
        call += " fails";
    }
    calls_.add(call);
    if (onCall) {
        onCall(call);
    }
    return succeeds;
}

}  // namespace kaz::test
