#include "dbus/records.h"
#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

namespace kaz::dbus {
namespace {

using testing::ElementsAre;

class FillHelper : public CodecTest {
  protected:
    // Fills `before` from a message with these values. Returns its new value and the result.
    template <typename T, typename... Values>
    std::pair<T, CodecResult<void>> filled(T before, const char* types, Values... values) {
        const MessagePtr message = bus.sealed(types, values...);
        CodecResult<void> result = fillHelper(before, message.get());
        return {std::move(before), std::move(result)};
    }

    template <typename T, typename... Values>
    void expectFilled(const T& before, const T& after, const char* types, Values... values) {
        const auto [value, result] = filled(before, types, values...);
        EXPECT_TRUE(result) << types << ": " << result.error();
        EXPECT_EQ(value, after) << types;
    }

    template <typename T, typename... Values>
    void expectKept(const T& before, const char* types, Values... values) {
        const auto [value, result] = filled(before, types, values...);
        EXPECT_EQ(errorOf(result), wrongType) << types;
        EXPECT_EQ(value, before) << types;
    }
};

TEST_F(FillHelper, StoresWhatItReads) {
    expectFilled<short>(5, -60, "n", -60);
    expectFilled<bool>(false, true, "b", 1);
    expectFilled<std::string>("before", "CCMP", "s", "CCMP");
    expectFilled<std::vector<unsigned char>>({9, 9, 9}, {1, 0}, "ay", 2, 1, 0);
    expectFilled<std::set<std::string>>({"before"}, {"wpa-psk"}, "as", 1, "wpa-psk");
    expectFilled<std::optional<int>>({}, -70, "i", -70);
    expectFilled<std::optional<bool>>(true, false, "b", 0);
    expectFilled<std::optional<std::string>>({}, "completed", "s", "completed");
    expectFilled<std::optional<OPath>>({}, OPath("/"), "o", "/");
    expectFilled<std::optional<std::vector<OPath>>>({}, std::vector<OPath>{}, "ao", 0);
}

TEST_F(FillHelper, LeavesTheTargetAsItWasOnFailure) {
    expectKept<short>(5, "i", 1);
    expectKept<bool>(true, "i", 0);
    expectKept<std::string>("before", "o", "/");
    expectKept<std::vector<unsigned char>>({9, 9, 9}, "s", "x");
    expectKept<std::set<std::string>>({"before"}, "s", "x");
    expectKept<std::optional<int>>(5, "s", "x");
    expectKept<std::optional<int>>({}, "s", "x");
    expectKept<std::optional<bool>>(true, "s", "x");
    expectKept<std::optional<std::string>>("before", "i", 1);
    expectKept<std::optional<OPath>>(OPath("/before"), "s", "x");
    expectKept<std::optional<std::vector<OPath>>>(std::vector<OPath>{"/before"}, "o", "/");
}

TEST_F(FillHelper, PassesTheErrorOnUnchanged) {
    std::optional<int> target;
    const MessagePtr message = bus.sealed("v", "s", "x");
    EXPECT_EQ(errorOf(fillHelper(target, message.get())), "Unable to read from variant: " + wrongType);
}

TEST_F(FillHelper, ReplacesAWholeRecord) {
    wifi::WPA_RSN target{{"sae"}, "before"};
    const MessagePtr message = bus.sealed("a{sv}", 1, "KeyMgmt", "as", 1, "wpa-psk");
    EXPECT_TRUE(fillHelper(target, message.get()));
    EXPECT_THAT(target.keyMgmt, ElementsAre("wpa-psk"));
    EXPECT_EQ(target.group, "");
}

TEST_F(FillHelper, LeavesTheRecordUntouchedWhenOnlyItsLastFieldFails) {
    wifi::WPA_RSN target{{"sae"}, "before"};
    const MessagePtr message = bus.sealed("a{sv}", 2, "KeyMgmt", "as", 1, "wpa-psk", "Group", "i", 1);
    EXPECT_FALSE(fillHelper(target, message.get()));
    EXPECT_THAT(target.keyMgmt, ElementsAre("sae"));
    EXPECT_EQ(target.group, "before");
}

}  // namespace
}  // namespace kaz::dbus
