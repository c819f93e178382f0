#include "diagnostics/connection_info_text.h"
#include "doubles/recording_log/recording_log.h"

#include <gmock/gmock.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <string>
#include <vector>

namespace kaz::wifi {
namespace {

using namespace std::string_literals;
using Status = ConnectionInfo::Status;
using Reason = ConnectionInfo::DisconnectReason;

ConnectionInfo live(Status status, const std::string& ssid, int signal) {
    ConnectionInfo info;
    info.status = status;
    info.ssid = ssid;
    info.signal = signal;
    return info;
}

ConnectionInfo gone(Reason reason, const std::string& ssid) {
    ConnectionInfo info;
    info.disconnectReason = reason;
    info.disconnectSsid = ssid;
    return info;
}

struct Form {
    ConnectionInfo info;
    std::string text;
};

void expectForms(const std::vector<Form>& forms) {
    for (const auto& [info, text] : forms) {
        EXPECT_EQ(toText(info), text);
        EXPECT_EQ(fmt::format("{}", info), text);
    }
}

TEST(ConnectionInfoText, SaysWhatIsKnownOfALiveConnection) {
    expectForms({
        {live(Status::connected, "Home", -52), "status=connected, ssid=\"Home\", signal=-52"},
        {live(Status::connectingIP, "Home", -52), "status=connectingIP, ssid=\"Home\", signal=-52"},
        {live(Status::connectingWifi, "Cafe \"A\"", NoSignaldBm),
         "status=connectingWifi, ssid=\"Cafe \\\"A\\\"\""},
        {live(Status::connected, "", -1), "status=connected, signal=-1"},
        {live(Status::connected, "Home", 40000), "status=connected, ssid=\"Home\", signal=40000"},
        {live(Status::connected, "Home", -101), "status=connected, ssid=\"Home\", signal=-101"},
        {live(Status::connected, "Home", -99), "status=connected, ssid=\"Home\", signal=-99"},
    });
}

TEST(ConnectionInfoText, SaysWhyAndFromWhereItWasDisconnected) {
    expectForms({
        {ConnectionInfo{}, "status=disconnected, disconnectReason=unknown"},
        {gone(Reason::causedBySystem, "Home"),
         "status=disconnected, disconnectReason=causedBySystem, disconnectssid=\"Home\""},
        {gone(Reason::causedByUser, "a\\"),
         "status=disconnected, disconnectReason=causedByUser, disconnectssid=\"a\\\\\""},
        {gone(Reason::unknown, "Home"),
         "status=disconnected, disconnectReason=unknown, disconnectssid=\"Home\""},
    });
}

TEST(ConnectionInfoText, OfAConnectedRecordWithoutSsidAndSignalIsOnlyTheStatus) {
    expectForms({{live(Status::connected, "", NoSignaldBm), "status=connected"}});
}

TEST(ConnectionInfoText, SaysASignalOfZeroBecauseOnlyMinusHundredMeansNone) {
    expectForms(
        {{live(Status::connectingWifi, "", 0), "status=connectingWifi, signal=0"},
         {live(Status::connectingWifi, "Home", 0), "status=connectingWifi, ssid=\"Home\", signal=0"}});
}

TEST(ConnectionInfoText, EndsAfterTheReasonWhenThereIsNoDisconnectSsid) {
    expectForms({{gone(Reason::causedByUser, ""), "status=disconnected, disconnectReason=causedByUser"}});
}

TEST(ConnectionInfoText, NamesValuesOutsideTheEnumerationsUnexpected) {
    expectForms({
        {live(static_cast<Status>(7), "Home", -52), "status=unexpected, ssid=\"Home\", signal=-52"},
        {live(static_cast<Status>(-1), "", NoSignaldBm), "status=unexpected"},
        {gone(static_cast<Reason>(5), ""), "status=disconnected, disconnectReason=unexpected"},
        {gone(static_cast<Reason>(-1), "Home"),
         "status=disconnected, disconnectReason=unexpected, disconnectssid=\"Home\""},
    });
}

TEST(ConnectionInfoText, LeavesOutTheFieldsOfTheOtherState) {
    ConnectionInfo info;
    info.status = Status::connected;
    info.ssid = "Here";
    info.signal = -52;
    info.disconnectReason = Reason::causedByUser;
    info.disconnectTime = std::chrono::steady_clock::time_point(std::chrono::seconds(5));
    info.disconnectSsid = "There";
    EXPECT_EQ(toText(info), "status=connected, ssid=\"Here\", signal=-52");
    info.status = Status::disconnected;
    EXPECT_EQ(toText(info), "status=disconnected, disconnectReason=causedByUser, disconnectssid=\"There\"");
}

TEST(ConnectionInfoText, CarriesAnySsidByteForByte) {
    expectForms({
        {live(Status::connected, "a\0b"s, NoSignaldBm), "status=connected, ssid=\"a\0b\""s},
        {live(Status::connected, "\xff\x80\n", NoSignaldBm), "status=connected, ssid=\"\xff\x80\n\""},
        {gone(Reason::unknown, "\0"s),
         "status=disconnected, disconnectReason=unknown, disconnectssid=\"\0\""s},
    });
}

struct Spec {
    std::string placeholder;
    std::string text;
};

TEST(ConnectionInfoText, IsWrittenUnderTheFormatOfAString) {
    const ConnectionInfo info = live(Status::connected, "Home", -52);
    const std::string plain = "status=connected, ssid=\"Home\", signal=-52";
    ASSERT_EQ(plain.size(), 41U);
    const std::vector<Spec> specs{
        {"{}", plain},
        {"{:}", plain},
        {"{:s}", plain},
        {"{:>60}", std::string(19, ' ') + plain},
        {"{:60}", plain + std::string(19, ' ')},
        {"{:<60}", plain + std::string(19, ' ')},
        {"{:*^61}", std::string(10, '*') + plain + std::string(10, '*')},
        {"{:5}", plain},
        {"{:.16}", "status=connected"},
        {"{:.0}", ""},
        {"{:.1000}", plain},
        {"{:#>20.6}", std::string(14, '#') + "status"},
        {"{:?}", "\"status=connected, ssid=\\\"Home\\\", signal=-52\""},
        {"[{0}|{0:.6}]", "[" + plain + "|status]"},
    };
    for (const auto& [placeholder, text] : specs) {
        EXPECT_EQ(fmt::format(fmt::runtime(placeholder), info), text) << placeholder;
        EXPECT_EQ(fmt::format(fmt::runtime(placeholder), plain), text) << placeholder << " of a string";
    }
}

TEST(ConnectionInfoText, AWidthPadsTheWholeText) {
    EXPECT_EQ(fmt::format("{:>60}", ConnectionInfo{}),
              std::string(15, ' ').append("status=disconnected, disconnectReason=unknown"));
}

TEST(ConnectionInfoText, TakesWidthAndPrecisionFromOtherArguments) {
    EXPECT_EQ(fmt::format("{:>{}.{}}", ConnectionInfo{}, 10, 6), "    status");
}

TEST(ConnectionInfoText, IsFormattedLikeAStringWhateverTheSsid) {
    for (const std::string& ssid : {"\"\\"s, "a\0b"s, "\xff\xfe"s, "Caf\xc3\xa9"s, "\x1b[31m"s, "{}"s}) {
        const ConnectionInfo info = live(Status::connected, ssid, -52);
        for (const char* placeholder : {"{}", "{:?}", "{:>60}", "{:.25}", "{:-^70.24}"}) {
            EXPECT_EQ(fmt::format(fmt::runtime(placeholder), info),
                      fmt::format(fmt::runtime(placeholder), toText(info)))
                << placeholder << ' ' << ::testing::PrintToString(ssid);
        }
    }
}

TEST(ConnectionInfoText, RefusesAFormatThatIsNoStrings) {
    for (const char* placeholder : {"{:d}", "{:x}", "{:f}", "{:+}", "{:05}", "{:.}", "{:>60"}) {
        EXPECT_THROW((void)fmt::format(fmt::runtime(placeholder), ConnectionInfo{}), fmt::format_error)
            << placeholder;
    }
}

TEST(ConnectionInfoText, IsAnArgumentOfALogMessage) {
    const test::RecordingLog log;
    spdlog::debug("connectionInfo changed: {}", live(Status::connected, "Home", -52));
    EXPECT_THAT(
        log.texts(spdlog::level::debug),
        ::testing::ElementsAre("connectionInfo changed: status=connected, ssid=\"Home\", signal=-52"));
}

}  // namespace
}  // namespace kaz::wifi
