// The record decoders on property dictionaries, with known and unknown keys, right and wrong types: each record has
// exactly the fields that were sent, or is refused as a whole.
#include "dbus/records.h"
#include "dbus/variant.h"
#include "fuzz/record_reference.h"
#include "fuzz/require.h"
#include "fuzz/sealed_value.h"
#include "fuzz/stepwise_reader.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>

namespace kaz::fuzz {
namespace {

template <typename Record>
std::optional<Record> checkRecord(sd_bus_message* message, const Value& dictionary) {
    std::optional<Record> expected;
    expect(dictionary, expected);
    sd_bus_message_rewind(message, 1);
    const auto stepwise = readStepwise<Record>(message);
    sd_bus_message_rewind(message, 1);
    const dbus::CodecResult<Record> record = dbus::read<Record>(message);
    require(sameResult(record, stepwise), "record and error are those of reading step by step");
    if (!record && nestsTooDeep(dictionary)) {
        return std::nullopt;
    }
    require(
        record.has_value() == expected.has_value(),
        "a record is decoded from every dictionary whose known keys are of their types, and from no other");
    if (!record) {
        require(!record.error().empty(), "a record that is refused has its reason told");
        return std::nullopt;
    }
    require(same(*record, *expected), "a record holds what was sent");
    require(dbus::read<std::string>(message) == std::string(nextText), "one value was taken, and no more");
    return *record;
}

// What a record holds, sent as the library itself sends dictionaries.
template <typename Record>
void checkStable(const Record& record, const dbus::Variant::Map& map) {
    const dbus::MessagePtr message = bus().message();
    require(dbus::write(message.get(), map).has_value(), "what was read can be written");
    test::StubBus::seal(message.get());
    const dbus::CodecResult<Record> again = dbus::read<Record>(message.get());
    require(again && same(*again, record), "what was written is read back");
}

template <typename Field>
void put(dbus::Variant::Map& map, const char* key, const std::optional<Field>& field) {
    if (field) {
        map.emplace(key, *field);
    }
}

void checkInterface(sd_bus_message* message, const Value& dictionary) {
    auto record = checkRecord<dbus::SupplicantInterfaceProperties>(message, dictionary);
    if (!record) {
        return;
    }
    // Paths are never sent in a dictionary.
    record->bsss.reset();
    record->currentNetwork.reset();
    record->currentBss.reset();
    dbus::Variant::Map map;
    put(map, "Scanning", record->scanning);
    put(map, "State", record->state);
    put(map, "DisconnectReason", record->disconnectReason);
    put(map, "Ifname", record->ifname);
    put(map, "AuthStatusCode", record->authStatusCode.value);
    put(map, "AssocStatusCode", record->assocStatusCode.value);
    put(map, "CurrentAuthMode", record->currentAuthMode.value);
    put(map, "SaePwe", record->saePwe.value);
    checkStable(*record, map);
}

void checkBss(sd_bus_message* message, const Value& dictionary) {
    const auto record = checkRecord<wifi::BSSData>(message, dictionary);
    if (!record) {
        return;
    }
    wifi::BSSData sendable;
    sendable.privacy = record->privacy;
    sendable.rsn.group = record->rsn.group;
    checkStable(sendable, {{"Privacy", sendable.privacy},
                           {"RSN", dbus::Variant::Map{{"Group", dbus::Variant(sendable.rsn.group)}}}});
}

// A record of one field.
template <typename Record>
void checkField(sd_bus_message* message, const Value& dictionary) {
    if (auto record = checkRecord<Record>(message, dictionary)) {
        if constexpr (std::is_same_v<Record, wifi::SignalPoll>) {
            record->linkSpeed = {};
        }
        const auto [key, field] = std::get<0>(keysOf(&*record));
        dbus::Variant::Map map;
        put(map, key, (*record).*field);
        checkStable(*record, map);
    }
}

using Decoding = void (*)(sd_bus_message* message, const Value& dictionary);
constexpr std::array<Decoding, 6> decodings{checkInterface,
                                            checkBss,
                                            checkField<wifi::SystemdUnitProperty>,
                                            checkField<dbus::NetworkdLinkProperties>,
                                            checkField<wifi::SignalPoll>,
                                            checkField<wifi::ConfiguredSsid>};

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaz::fuzz;
    FuzzedDataProvider bytes(data, size);
    const Decoding decoding = bytes.PickValueInArray(decodings);
    checkMessage(makeWrapped(bytes, makeDictionary(bytes)), decoding);
    return 0;
}
