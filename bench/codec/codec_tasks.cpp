#include "bench/codec/codec_tasks.h"

#include "bench/codec/hand_written_codec.h"
#include "bench/codec/sample_messages.h"
#include "dbus/records.h"
#include "dbus/variant.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace kaz::bench {
namespace {

using Message = std::shared_ptr<sd_bus_message>;

void require(bool good) {
    if (!good) {
        throw std::runtime_error("a sample did not decode");
    }
}

Message shared(dbus::MessagePtr message) {
    return message;
}

void addReadBss(std::vector<CodecTask>& tasks, const Message& message) {
    tasks.push_back({"read a BSS", "hand-written sd-bus", [message] {
                         sd_bus_message_rewind(message.get(), 1);
                         wifi::BSSData bss;
                         require(readBssByHand(message.get(), bss) >= 0 && bss.signal == -63);
                     }});
    tasks.push_back({"read a BSS", "libkazwifi", [message] {
                         sd_bus_message_rewind(message.get(), 1);
                         const auto bss = dbus::read<wifi::BSSData>(message.get());
                         require(bss && bss->signal == -63);
                     }});
}

void addReadPropertiesChanged(std::vector<CodecTask>& tasks, const Message& message) {
    tasks.push_back({"read a PropertiesChanged", "hand-written sd-bus", [message] {
                         sd_bus_message_rewind(message.get(), 1);
                         dbus::SupplicantInterfaceProperties properties;
                         require(readPropertiesChangedByHand(message.get(), properties) >= 0 &&
                                 properties.state.has_value());
                     }});
    tasks.push_back({"read a PropertiesChanged", "libkazwifi", [message] {
                         sd_bus_message_rewind(message.get(), 1);
                         const auto properties =
                             dbus::read<dbus::SupplicantInterfaceProperties>(message.get());
                         require(properties && properties->state);
                     }});
}

void addWriteNetwork(std::vector<CodecTask>& tasks, sd_bus* bus) {
    tasks.push_back({"write a network", "hand-written sd-bus", [bus] {
                         const dbus::MessagePtr message = makeSignal(bus);
                         require(writeNetworkByHand(message.get()) >= 0);
                     }});
    const dbus::Variant::Map network{
        {"ssid", "Neighbour5"}, {"key_mgmt", "WPA-PSK"}, {"psk", "correct horse battery"}, {"ieee80211w", 1}};
    tasks.push_back({"write a network", "libkazwifi", [bus, network] {
                         const dbus::MessagePtr message = makeSignal(bus);
                         require(dbus::write(message.get(), network).has_value());
                     }});
}

}  // namespace

std::vector<CodecTask> codecTasks(sd_bus* bus) {
    std::vector<CodecTask> tasks;
    addReadBss(tasks, shared(makeBssProperties(bus)));
    addReadPropertiesChanged(tasks, shared(makePropertiesChanged(bus)));
    addWriteNetwork(tasks, bus);
    return tasks;
}

}  // namespace kaz::bench
