#include "dbus/records.h"
#include "unit/dbus/codec_fixture.h"

#include <utility>

namespace kaz::dbus {
namespace {

using wifi::BSSData;
using wifi::ConfiguredSsid;
using wifi::SignalPoll;
using wifi::SystemdUnitProperty;
using wifi::WPA_RSN;

const std::string valueError = "Value decoding error: ";
const std::string keyError = "Key error: ";
const std::string variantError = "Unable to read from variant: ";
const std::string arrayError = "Unable to read from array: ";

class RecordErrors : public CodecTest {
  protected:
    // The error of the record with this one entry.
    template <typename R, typename... Values>
    std::string errorOfValue(const char* key, const char* type, Values... values) {
        return errorFrom<R>("a{sv}", 1, key, type, values...);
    }
};

TEST_F(RecordErrors, AMessageWithoutValuesIsNoRecord) {
    EXPECT_FALSE(readFrom<SystemdUnitProperty>("").has_value());
    EXPECT_FALSE(readFrom<BSSData>("").has_value());
    // Nor is there one behind the last value.
    const auto message = bus.sealed("s", "last");
    ASSERT_TRUE(read<std::string>(message.get()).has_value());
    EXPECT_FALSE(read<SignalPoll>(message.get()).has_value());
}

TEST_F(RecordErrors, AKnownKeyOfEveryRecordRefusesAValueOfAnotherType) {
    using Interface = SupplicantInterfaceProperties;
    const std::pair<const char*, std::string> errors[] = {
        {"ActiveState", errorOfValue<SystemdUnitProperty>("ActiveState", "i", 1)},
        {"OnlineState", errorOfValue<NetworkdLinkProperties>("OnlineState", "b", 1)},
        {"Scanning", errorOfValue<Interface>("Scanning", "s", "true")},
        {"BSSs", errorOfValue<Interface>("BSSs", "as", 1, "/b/0")},
        {"CurrentNetwork", errorOfValue<Interface>("CurrentNetwork", "s", "/n/0")},
        {"CurrentBSS", errorOfValue<Interface>("CurrentBSS", "ao", 0)},
        {"State", errorOfValue<Interface>("State", "o", "/completed")},
        {"DisconnectReason", errorOfValue<Interface>("DisconnectReason", "u", 3U)},
        {"ssid", errorOfValue<ConfiguredSsid>("ssid", "ay", 1, 'x')},
        {"Signal", errorOfValue<BSSData>("Signal", "i", -60)},
        {"Privacy", errorOfValue<BSSData>("Privacy", "i", 1)},
        {"SSID", errorOfValue<BSSData>("SSID", "s", "Home")},
        {"WPA", errorOfValue<BSSData>("WPA", "s", "wpa-psk")},
        {"RSN", errorOfValue<BSSData>("RSN", "i", 1)},
        {"KeyMgmt", errorOfValue<WPA_RSN>("KeyMgmt", "s", "wpa-psk")},
        {"Group", errorOfValue<WPA_RSN>("Group", "as", 0)},
        {"rssi", errorOfValue<SignalPoll>("rssi", "n", -61)},
    };
    for (const auto& [key, error] : errors) {
        EXPECT_EQ(error, valueError + variantError + wrongType) << key;
    }
}

TEST_F(RecordErrors, AWrongValueFailsTheWholeRecordWhereverItStands) {
    EXPECT_EQ(errorFrom<BSSData>("a{sv}", 3, "Privacy", "b", 1, "Signal", "i", -60, "SSID", "ay", 1, 1),
              valueError + variantError + wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("a{sv}", 2, "rssi", "i", -61, "rssi", "s", "-62"),
              valueError + variantError + wrongType);
}

TEST_F(RecordErrors, AValueWithoutAVariantAroundItTellsNoVariant) {
    EXPECT_EQ(errorFrom<SignalPoll>("a{ss}", 1, "rssi", "-61"), valueError + wrongType);
}

TEST_F(RecordErrors, ANestedRecordTellsBothLevels) {
    EXPECT_EQ(errorOfValue<BSSData>("RSN", "a{sv}", 1, "KeyMgmt", "s", "wpa-psk"),
              valueError + variantError + valueError + variantError + wrongType);
    EXPECT_EQ(errorOfValue<BSSData>("WPA", "a{sv}", 1, "Group", "i", 1),
              valueError + variantError + valueError + variantError + wrongType);
}

TEST_F(RecordErrors, ABadElementInANestedRecordTellsEveryLevel) {
    const MessagePtr message =
        bus.sealed("v", "a{sv}", 1, "RSN", "a{sv}", 1, "KeyMgmt", "as", 2, "sae", "wpa-psk");
    corruptText(message.get(), "wpa-psk");
    EXPECT_EQ(errorOf(read<BSSData>(message.get())),
              variantError + valueError + variantError + valueError + variantError + arrayError + badMessage);
}

TEST_F(RecordErrors, AKeyThatIsNoStringIsAKeyError) {
    EXPECT_EQ(errorFrom<SignalPoll>("a{iv}", 1, 1, "i", -61), keyError + wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("a{ov}", 1, "/rssi", "i", -61), keyError + wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("v", "a{iv}", 1, 1, "i", -61), variantError + keyError + wrongType);
}

TEST_F(RecordErrors, AKeyThatIsNotUtf8IsAKeyError) {
    const MessagePtr message = bus.sealed("a{sv}", 1, "rssi", "i", -61);
    corruptText(message.get(), "rssi");
    EXPECT_EQ(errorOf(read<SignalPoll>(message.get())), keyError + badMessage);
}

TEST_F(RecordErrors, AnUnknownValueThatCannotBeSkippedTellsTheBareText) {
    const MessagePtr message = bus.sealed("a{sv}", 1, "unknown", "s", "damaged");
    corruptText(message.get(), "damaged");
    EXPECT_EQ(errorOf(read<SignalPoll>(message.get())), badMessage);
}

TEST_F(RecordErrors, AValueThatIsNoDictionaryTellsTheBareText) {
    EXPECT_EQ(errorFrom<SignalPoll>("s", "rssi"), wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("(s)", "rssi"), wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("(sv)", "rssi", "i", -61), invalidArgument);  // "sv" is no element type
    EXPECT_EQ(errorFrom<SignalPoll>("as", 1, "rssi"), wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("a(sv)", 1, "rssi", "i", -61), wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>("v", "i", -61), variantError + wrongType);
}

TEST_F(RecordErrors, NothingLeftToReadTellsTheBareText) {
    EXPECT_EQ(errorFrom<SystemdUnitProperty>(""), wrongType);
    EXPECT_EQ(errorFrom<NetworkdLinkProperties>(""), wrongType);
    EXPECT_EQ(errorFrom<SupplicantInterfaceProperties>(""), wrongType);
    EXPECT_EQ(errorFrom<ConfiguredSsid>(""), wrongType);
    EXPECT_EQ(errorFrom<BSSData>(""), wrongType);
    EXPECT_EQ(errorFrom<SignalPoll>(""), wrongType);
    EXPECT_EQ(errorOf(read<SignalPoll>(nullptr)), invalidArgument);
}

}  // namespace
}  // namespace kaz::dbus
