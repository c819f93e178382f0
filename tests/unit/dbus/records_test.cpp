#include "dbus/records.h"

#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

namespace kaz::dbus {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using wifi::BSSData;
using wifi::ConfiguredSsid;
using wifi::SignalPoll;
using wifi::SystemdUnitProperty;
using wifi::WPA_RSN;

class Records : public CodecTest {
  protected:
    // The record in a message with these values.
    template <typename R, typename... Values>
    R decoded(const char* types, Values... values) {
        auto record = readFrom<R>(types, values...);
        EXPECT_TRUE(record) << record.error();
        return record.value_or(R{});
    }

    // A dictionary with entries of every kind that a record does not know, and "State" at its end.
    MessagePtr crowdedDictionary() {
        return bus.sealed("a{sv}", 12, "Byte", "y", 1, "Text", "s", "x", "Bytes", "ay", 2, 1, 2, "Texts",
                          "as", 1, "x", "Paths", "ao", 0, "Dictionary", "a{sv}", 1, "State", "s", "inner",
                          "Struct", "(isb)", 1, "x", 1, "Variant", "v", "v", "i", 1, "Nested", "a{s(oaay)}",
                          1, "x", "/", 1, 1, 7, "Double", "d", 0.5, "Wide", "t", UINT64_C(1), "State", "s",
                          "outer");
    }
};

void expectEmpty(const SupplicantInterfaceProperties& record) {
    EXPECT_EQ(record.scanning, std::nullopt);
    EXPECT_EQ(record.bsss, std::nullopt);
    EXPECT_EQ(record.currentNetwork, std::nullopt);
    EXPECT_EQ(record.currentBss, std::nullopt);
    EXPECT_EQ(record.state, std::nullopt);
    EXPECT_EQ(record.disconnectReason, std::nullopt);
}

void expectEmpty(const WPA_RSN& record) {
    EXPECT_THAT(record.keyMgmt, IsEmpty());
    EXPECT_EQ(record.group, "");
}

void expectEmpty(const BSSData& record) {
    EXPECT_EQ(record.signal, 0);
    EXPECT_FALSE(record.privacy);
    EXPECT_THAT(record.ssid, IsEmpty());
    expectEmpty(record.wpa);
    expectEmpty(record.rsn);
}

TEST_F(Records, StartFromAValueInitialisedRecordForAnEmptyDictionary) {
    EXPECT_EQ(decoded<SystemdUnitProperty>("a{sv}", 0).activeState, std::nullopt);
    EXPECT_EQ(decoded<NetworkdLinkProperties>("a{sv}", 0).onlineState, std::nullopt);
    EXPECT_EQ(decoded<ConfiguredSsid>("a{sv}", 0).ssid, std::nullopt);
    EXPECT_EQ(decoded<SignalPoll>("a{sv}", 0).rssi, std::nullopt);
    expectEmpty(decoded<SupplicantInterfaceProperties>("a{sv}", 0));
    expectEmpty(decoded<BSSData>("a{sv}", 0));
    expectEmpty(decoded<WPA_RSN>("a{sv}", 0));
}

TEST_F(Records, OfOneFieldTakeItsKey) {
    EXPECT_EQ(decoded<SystemdUnitProperty>("a{sv}", 1, "ActiveState", "s", "active").activeState, "active");
    EXPECT_EQ(decoded<NetworkdLinkProperties>("a{sv}", 1, "OnlineState", "s", "partial").onlineState,
              "partial");
    EXPECT_EQ(decoded<ConfiguredSsid>("a{sv}", 1, "ssid", "s", "\"Home\"").ssid, "\"Home\"");
    EXPECT_EQ(decoded<SignalPoll>("a{sv}", 1, "rssi", "i", -61).rssi, -61);
}

TEST_F(Records, OfASupplicantInterfaceTakeAllSixKeys) {
    const auto record = decoded<SupplicantInterfaceProperties>(
        "a{sv}", 6, "Scanning", "b", 0, "BSSs", "ao", 2, "/b/1", "/b/0", "CurrentNetwork", "o", "/n/0",
        "CurrentBSS", "o", "/", "State", "s", "completed", "DisconnectReason", "i", -3);
    EXPECT_EQ(record.scanning, false);
    EXPECT_EQ(record.bsss, (std::vector<OPath>{"/b/1", "/b/0"}));
    EXPECT_EQ(record.currentNetwork, OPath("/n/0"));
    EXPECT_EQ(record.currentBss, OPath("/"));
    EXPECT_EQ(record.state, "completed");
    EXPECT_EQ(record.disconnectReason, -3);
}

TEST_F(Records, OfAChangeHoldingOnlyStateHaveFiveEmptyFields) {
    auto record = decoded<SupplicantInterfaceProperties>("a{sv}", 1, "State", "s", "scanning");
    EXPECT_EQ(record.state, "scanning");
    record.state.reset();
    expectEmpty(record);
}

TEST_F(Records, OfABssTakeAllFiveKeys) {
    const auto record =
        decoded<BSSData>("a{sv}", 5, "Signal", "n", -60, "Privacy", "b", 1, "SSID", "ay", 2, 0, 255, "WPA",
                         "a{sv}", 1, "KeyMgmt", "as", 1, "wpa-eap", "RSN", "a{sv}", 2, "Group", "s", "ccmp",
                         "KeyMgmt", "as", 2, "wpa-psk", "sae");
    EXPECT_EQ(record.signal, -60);
    EXPECT_TRUE(record.privacy);
    EXPECT_THAT(record.ssid, ElementsAre(0, 255));
    EXPECT_THAT(record.wpa.keyMgmt, ElementsAre("wpa-eap"));
    EXPECT_EQ(record.wpa.group, "");
    EXPECT_THAT(record.rsn.keyMgmt, ElementsAre("sae", "wpa-psk"));
    EXPECT_EQ(record.rsn.group, "ccmp");
}

TEST_F(Records, OfABssWithTwoRsnSuitesAndAGroupLeaveWpaEmpty) {
    const auto record = decoded<BSSData>("a{sv}", 1, "RSN", "a{sv}", 2, "KeyMgmt", "as", 2, "wpa-psk",
                                         "wpa-psk-sha256", "Group", "s", "ccmp");
    EXPECT_THAT(record.rsn.keyMgmt, ElementsAre("wpa-psk", "wpa-psk-sha256"));
    EXPECT_EQ(record.rsn.group, "ccmp");
    expectEmpty(record.wpa);
}

TEST_F(Records, OfABssWithoutSignalHaveSignalZero) {
    EXPECT_EQ(decoded<BSSData>("a{sv}", 1, "Privacy", "b", 1).signal, 0);
}

TEST_F(Records, OfABssTakeWhereItIsAndWhatItDemands) {
    const auto record = decoded<BSSData>("a{sv}", 4, "BSSID", "ay", 6, 1, 2, 3, 4, 5, 6, "Frequency", "q",
                                         2412, "Rates", "au", 2, 61500000U, 54000000U, "Mode", "s", "ad-hoc");
    EXPECT_THAT(record.bssid.value.value(), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(record.frequency.value, 2412);
    EXPECT_THAT(record.rates.value.value(), ElementsAre(61500000U, 54000000U));
    EXPECT_EQ(record.mode.value, "ad-hoc");
}

TEST_F(Records, LeaveLenientFieldsOfAnotherTypeEmptyAndKeepTheOthers) {
    const auto bss =
        decoded<BSSData>("a{sv}", 6, "BSSID", "s", "01:02:03:04:05:06", "Frequency", "u", 2412U, "Rates",
                         "ay", 1, 1, "Mode", "v", "s", "ad-hoc", "Signal", "n", -42, "Frequency", "a{sv}", 0);
    EXPECT_FALSE(bss.bssid.value || bss.frequency.value || bss.rates.value || bss.mode.value);
    EXPECT_EQ(bss.signal, -42);
    const auto interface = decoded<SupplicantInterfaceProperties>(
        "a{sv}", 5, "AuthStatusCode", "u", 17U, "AssocStatusCode", "s", "17", "CurrentAuthMode", "i", 1,
        "SaePwe", "i", 2, "State", "s", "scanning");
    EXPECT_FALSE(interface.authStatusCode.value || interface.assocStatusCode.value ||
                 interface.currentAuthMode.value || interface.saePwe.value);
    EXPECT_EQ(interface.state, "scanning");
}

TEST_F(Records, OfASupplicantInterfaceTakeItsStatusCodes) {
    const auto record =
        decoded<SupplicantInterfaceProperties>("a{sv}", 4, "AuthStatusCode", "i", 17, "AssocStatusCode", "i",
                                               -1, "CurrentAuthMode", "s", "WPA2-PSK", "SaePwe", "s", "2");
    EXPECT_EQ(record.saePwe.value, "2");
    EXPECT_EQ(record.authStatusCode.value, 17);
    EXPECT_EQ(record.assocStatusCode.value, -1);
    EXPECT_EQ(record.currentAuthMode.value, "WPA2-PSK");
}

TEST_F(Records, OfABssSkipOtherKeys) {
    const auto record =
        decoded<BSSData>("a{sv}", 5, "BSSID", "ay", 6, 1, 2, 3, 4, 5, 6, "IEs", "ay", 0, "Frequency", "q",
                         2412, "WPS", "a{sv}", 1, "Type", "s", "", "Signal", "n", -42);
    EXPECT_EQ(record.signal, -42);
    EXPECT_THAT(record.ssid, IsEmpty());
}

TEST_F(Records, SkipUnknownKeysWithValuesOfEveryKind) {
    const MessagePtr message = crowdedDictionary();
    const auto record = read<SupplicantInterfaceProperties>(message.get());
    ASSERT_TRUE(record) << record.error();
    EXPECT_EQ(record->state, "outer");
    EXPECT_EQ(sd_bus_message_at_end(message.get(), 1), 1);
}

TEST_F(Records, SkipUnknownArraysOfNumbersOfEveryWidth) {
    const MessagePtr message =
        bus.sealed("a{sv}", 12, "y", "ay", 3, 1, 2, 3, "n", "an", 1, -1, "q", "aq", 1, 1, "i", "ai", 1, -1,
                   "u", "au", 2, 1U, 2U, "x", "ax", 1, INT64_C(-1), "t", "at", 1, UINT64_C(1), "d", "ad", 1,
                   0.5, "none", "at", 0, "b", "ab", 2, 1, 0, "empty", "ay", 0, "rssi", "i", -61);
    const auto record = read<SignalPoll>(message.get());
    ASSERT_TRUE(record) << record.error();
    EXPECT_EQ(record->rssi, -61);
    EXPECT_EQ(sd_bus_message_at_end(message.get(), 1), 1);
}

TEST_F(Records, CompareKeysExactly) {
    const auto record =
        decoded<SupplicantInterfaceProperties>("a{sv}", 6, "state", "s", "x", "STATE", "s", "x", "State ",
                                               "s", "x", "Stat", "s", "x", "", "s", "x", "BSSS", "i", 1);
    expectEmpty(record);
    EXPECT_EQ(decoded<SignalPoll>("a{sv}", 1, "RSSI", "i", -61).rssi, std::nullopt);
    EXPECT_EQ(decoded<ConfiguredSsid>("a{sv}", 1, "SSID", "s", "x").ssid, std::nullopt);
}

TEST_F(Records, TakeTheLaterOfTwoValuesOfAKey) {
    EXPECT_EQ(decoded<SignalPoll>("a{sv}", 3, "rssi", "i", -1, "other", "i", 0, "rssi", "i", -2).rssi, -2);
    const auto bss = decoded<BSSData>("a{sv}", 2, "RSN", "a{sv}", 2, "KeyMgmt", "as", 1, "sae", "Group", "s",
                                      "ccmp", "RSN", "a{sv}", 1, "KeyMgmt", "as", 1, "wpa-psk");
    EXPECT_THAT(bss.rsn.keyMgmt, ElementsAre("wpa-psk"));
    EXPECT_EQ(bss.rsn.group, "");
}

TEST_F(Records, WrappedInAVariantDecodeLikeTheBareDictionary) {
    EXPECT_EQ(decoded<SignalPoll>("v", "a{sv}", 1, "rssi", "i", -61).rssi, -61);
    EXPECT_EQ(decoded<ConfiguredSsid>("v", "v", "a{sv}", 1, "ssid", "s", "486f6d65").ssid, "486f6d65");
}

TEST_F(Records, TakeValuesWithAndWithoutAVariantAroundThem) {
    EXPECT_EQ(decoded<SystemdUnitProperty>("a{ss}", 1, "ActiveState", "active").activeState, "active");
    EXPECT_EQ(decoded<SignalPoll>("a{sv}", 1, "rssi", "v", "i", -61).rssi, -61);
}

TEST_F(Records, AreReadFromAnEmptyArrayOfWhateverElements) {
    EXPECT_EQ(decoded<SignalPoll>("as", 0).rssi, std::nullopt);
    EXPECT_EQ(decoded<SignalPoll>("a{is}", 0).rssi, std::nullopt);
}

TEST_F(Records, ConsumeTheWholeDictionary) {
    const MessagePtr message = bus.sealed("sa{sv}vas", "fi.w1.wpa_supplicant1.Interface", 1, "rssi", "i", -61,
                                          "a{sv}", 1, "rssi", "i", -62, 1, "Invalidated");
    EXPECT_EQ(read<std::string>(message.get()), "fi.w1.wpa_supplicant1.Interface");
    EXPECT_EQ(read<SignalPoll>(message.get())->rssi, -61);
    EXPECT_EQ(read<SignalPoll>(message.get())->rssi, -62);
    EXPECT_THAT(*read<std::vector<std::string>>(message.get()), ElementsAre("Invalidated"));
}

// In so many containers sd-bus refuses to enter an entry, but there is none.
TEST_F(Records, AreReadFromAnEmptyDictionaryInsideOfAsManyVariantsAsSdBusAllows) {
    constexpr int variants = 127;
    const MessagePtr message = bus.message();
    for (int depth = 1; depth <= variants; ++depth) {
        ASSERT_GE(sd_bus_message_open_container(message.get(), 'v', depth < variants ? "v" : "a{sv}"), 0)
            << depth;
    }
    ASSERT_GE(sd_bus_message_open_container(message.get(), 'a', "{sv}"), 0);
    for (int depth = 0; depth <= variants; ++depth) {
        ASSERT_GE(sd_bus_message_close_container(message.get()), 0) << depth;
    }
    test::StubBus::seal(message.get());
    const auto poll = read<SignalPoll>(message.get());
    EXPECT_TRUE(poll) << poll.error();
}

}  // namespace
}  // namespace kaz::dbus
