#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <chrono>
#include <string>

#include "kazwifictl/commands/change_writer.h"
#include "unit/kazwifictl/fake_device.h"

namespace kaz::ctl {
namespace {

using test::connectedTo;
using test::network;
using wifi::ConnectionInfo;
using wifi::SecurityMode;

class ChangeWriterTest : public testing::Test {
  protected:
    ChangeWriterTest() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        view.running = true;
    }

    std::string text(const Event& event) { return ChangeWriter(plain).change(view, event, time); }
    std::string json(const Event& event) { return ChangeWriter(asJson).change(view, event, time); }

    const ChangeWriter::WallClock::time_point time{std::chrono::milliseconds(1'700'000'000'123)};
    Output plain{ColourChoice::never, false};
    Output asJson{ColourChoice::never, true};
    View view;
};

TEST_F(ChangeWriterTest, BeginsWithEverythingThatIsSo) {
    view.connection = connectedTo("Home", -50);
    view.networks = {network("Office", -60, SecurityMode::rsnPsk, true)};
    view.scanning = true;
    EXPECT_EQ(ChangeWriter(plain).begin(view, time),
              "22:13:20.123  wifi        on, wpa_supplicant runs\n"
              "22:13:20.123  connection  connected to \"Home\", #### -50 dBm\n"
              "22:13:20.123  scan        began\n"
              "22:13:20.123  network     + \"Office\"  ###. -60 dBm  WPA2 personal, saved\n");
    EXPECT_EQ(ChangeWriter(asJson).begin({}, time),
              "{\"format\":1,\"time\":\"2023-11-14T22:13:20.123Z\",\"event\":\"wifi\",\"enabled\":true,"
              "\"running\":false}\n");
}

TEST_F(ChangeWriterTest, TellsEveryKindOfChange) {
    EXPECT_EQ(text({{}, PowerChange{false, false}}),
              "22:13:20.123  wifi        off, wpa_supplicant does not run\n");
    EXPECT_EQ(text({{}, ScanningChange{true}}), "22:13:20.123  scan        began\n");
    view.scanning = true;
    EXPECT_EQ(text({{}, ScanningChange{false}}), "22:13:20.123  scan        ended\n");
    ConnectionInfo info;
    info.status = ConnectionInfo::Status::connectingIP;
    info.ssid = "Home";
    info.signal = wifi::NoSignaldBm;
    EXPECT_EQ(text({{}, ConnectionChange{info}}),
              "22:13:20.123  connection  getting an address from \"Home\"\n");
    info = {};
    info.disconnectSsid = "Home";
    info.disconnectReason = ConnectionInfo::DisconnectReason::causedBySystem;
    EXPECT_EQ(text({{}, ConnectionChange{info}}),
              "22:13:20.123  connection  not connected, last to \"Home\", ended by itself\n");
}

TEST_F(ChangeWriterTest, TellsHowTheListChangedNotTheWholeList) {
    view.networks = {network("Same", -50, SecurityMode::none), network("Gone", -51, SecurityMode::none),
                     network("Weaker", -52, SecurityMode::wep)};
    const Event event{
        {},
        NetworksChange{{network("Same", -50, SecurityMode::none), network("New", -53, SecurityMode::wpaPsk),
                        network("Weaker", -80, SecurityMode::wep, true)}}};
    EXPECT_EQ(
        text(event),
        "22:13:20.123  network     - \"Gone\"  #### -51 dBm  open\n"
        "22:13:20.123  network     + \"New\"  #### -53 dBm  WPA personal\n"
        "22:13:20.123  network     ~ \"Weaker\"  #... -80 dBm  WEP, saved, was -52 dBm, was not saved\n");
    EXPECT_NE(json(event).find("\"event\":\"network\",\"change\":\"disappeared\",\"ssid\":\"Gone\""),
              std::string::npos)
        << json(event);
}

TEST_F(ChangeWriterTest, IsSilentAboutWhatStaysTheSame) {
    EXPECT_EQ(text({{}, PowerChange{true, true}}), "");
    EXPECT_EQ(text({{}, ScanningChange{false}}), "");
    EXPECT_EQ(text({{}, NetworksChange{}}), "");
    EXPECT_EQ(text({{}, ConnectionChange{}}), "");
}

TEST_F(ChangeWriterTest, WritesOneLineOfAsciiAnObject) {
    const Event event{{}, NetworksChange{{network("a\nb\u202e\xff", -50, SecurityMode::none)}}};
    const std::string line = json(event);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    for (const char letter : line) {
        EXPECT_TRUE(letter == '\n' || (letter >= 0x20 && letter < 0x7f)) << line;
    }
    EXPECT_NE(line.find(R"("ssid":"a\nb\u202e\ufffd","ssid_hex":"610a62e280aeff")"), std::string::npos)
        << line;
}

}  // namespace
}  // namespace kaz::ctl
