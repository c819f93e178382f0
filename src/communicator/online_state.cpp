#include "communicator/online_state.h"

#include "base/log.h"
#include "communicator/bus_names.h"
#include "dbus/message_io.h"
#include "dbus/reply.h"

#include <string>
#include <utility>

namespace kaz::wifi {

OnlineState::OnlineState(dbus::Bus& bus, Handler handler) : bus_(bus), handler_(std::move(handler)) {}

void OnlineState::subscribeSync() {
    bus_.subscribe(bus::networkd::service, bus::networkd::managerPath, bus::propertiesInterface,
                   bus::propertiesChanged, dbus::Bus::Lifetime::temporary,
                   [this](dbus::MessageDecoder& decoder) { onSignalPropertiesChanged(decoder); });
    readSync();
}

void OnlineState::detach() {
    unanswered_ = false;
}

void OnlineState::onOwnerChangedSync(bool owned) {
    if (owned && unanswered_) {
        readSync();
    }
}

void OnlineState::onSignalPropertiesChanged(dbus::MessageDecoder& decoder) {
    const auto interface = dbus::read<std::string>(decoder);
    const auto properties = dbus::read<dbus::NetworkdLinkProperties>(decoder);
    if (interface && properties && *interface == bus::networkd::managerInterface) {
        report(*properties);
    }
}

void OnlineState::report(const dbus::NetworkdLinkProperties& properties) {
    if (!properties.onlineState) {
        return;
    }
    log::debug("OnlineState={}", *properties.onlineState);
    handler_(*properties.onlineState == "online");
}

void OnlineState::readSync() {
    dbus::Reply reply =
        bus_.object(bus::networkd::service, bus::networkd::managerPath, bus::propertiesInterface)
            .call("GetAll", std::string(bus::networkd::managerInterface));
    unanswered_ = !reply;
    if (unanswered_) {
        return;
    }
    if (const auto properties = reply.read<dbus::NetworkdLinkProperties>()) {
        report(*properties);
    }
}

}  // namespace kaz::wifi
