#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <chrono>
#include <string>

#include "kazwifictl/commands/change_writer.h"
#include "unit/kazwifictl/fake_world.h"

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
        before.running = now.running = true;
    }

    std::string text(const Snapshot& now) { return ChangeWriter(plain).change(before, now, time); }
    std::string json(const Snapshot& now) { return ChangeWriter(asJson).change(before, now, time); }

    const ChangeWriter::WallClock::time_point time{std::chrono::milliseconds(1'700'000'000'123)};
    Output plain{ColourChoice::never, false};
    Output asJson{ColourChoice::never, true};
    Snapshot before;
    Snapshot now;
};

TEST_F(ChangeWriterTest, BeginsWithEverythingThatIsSo) {
    now.connection.info = connectedTo("Home", -50);
    now.networks = {network("Office", -60, SecurityMode::rsnPsk, true)};
    now.scanning = true;
    EXPECT_EQ(ChangeWriter(plain).begin(now, time),
              "22:13:20.123  wifi        on, wpa_supplicant runs\n"
              "22:13:20.123  connection  connected to \"Home\", #### -50 dBm\n"
              "22:13:20.123  scan        began\n"
              "22:13:20.123  network     + ###.  -60 dBm  WPA2 personal   \"Office\", saved\n");
    EXPECT_EQ(ChangeWriter(asJson).begin({}, time),
              "{\"format\":1,\"time\":\"2023-11-14T22:13:20.123Z\",\"event\":\"wifi\",\"enabled\":true,"
              "\"running\":false,\"why\":null}\n");
}

TEST_F(ChangeWriterTest, TellsEveryKindOfChange) {
    now.enabled = now.running = false;
    const std::string off = "22:13:20.123  wifi        off, wpa_supplicant does not run\n";
    EXPECT_EQ(text(now), off);
    before.scanning = true;
    EXPECT_EQ(text(now), off) << "nothing about the scan that it ended";
    before.scanning = false;
    now = before;
    now.scanning = true;
    EXPECT_EQ(text(now), "22:13:20.123  scan        began\n");
    std::swap(before, now);
    EXPECT_EQ(text(now), "22:13:20.123  scan        ended\n");
    before = now;
    ConnectionInfo& info = now.connection.info;
    info.status = ConnectionInfo::Status::connectingIP;
    info.ssid = "Home";
    info.signal = wifi::NoSignaldBm;
    EXPECT_EQ(text(now), "22:13:20.123  connection  getting an address from \"Home\"\n");
    info = {};
    info.disconnectSsid = "Home";
    info.disconnectReason = ConnectionInfo::DisconnectReason::causedBySystem;
    EXPECT_EQ(text(now), "22:13:20.123  connection  not connected\n");
}

TEST_F(ChangeWriterTest, TellsWhyAConnectionOrAnAttemptEnded) {
    before.connection.info = connectedTo("Home", -50);
    now.connection.lastOutcome = {
        "Home", wifi::Stage::online, wifi::Cause::accessPointGone, wifi::Certainty::certain, {}, {}};
    EXPECT_EQ(text(now), "22:13:20.123  connection  disconnected from \"Home\": the access point is gone\n");
    EXPECT_NE(json(now).find("\"cause\":\"access-point-gone\",\"certainty\":\"certain\""), std::string::npos)
        << json(now);
    now.connection.lastOutcome.stage = wifi::Stage::keyExchange;
    now.connection.lastOutcome.cause = wifi::Cause::wrongKey;
    now.connection.lastOutcome.certainty = wifi::Certainty::probable;
    const std::string probable =
        "22:13:20.123  connection  no connection to \"Home\": the password is probably wrong\n";
    EXPECT_EQ(text(now), probable);
    before = now;
    EXPECT_EQ(text(now), "");
    before.connection.lastOutcome.cause = wifi::Cause::unknown;
    EXPECT_EQ(text(now), probable) << "evidence that came later";
}

TEST_F(ChangeWriterTest, TellsThatAnotherProgramEndedAConnection) {
    before.connection.info = connectedTo("Home", -50);
    now.connection.lastOutcome = {
        "Home", wifi::Stage::online, wifi::Cause::unknown, wifi::Certainty::unknown, {}, {}};
    now.connection.lastOutcome.evidence.reasonCode = 3;
    now.connection.lastOutcome.evidence.reasonSender = wifi::Evidence::Sender::device;
    EXPECT_EQ(
        text(now),
        "22:13:20.123  connection  disconnected from \"Home\": another program probably asked for it\n");
}

TEST_F(ChangeWriterTest, TellsWhyWifiDoesNotWork) {
    const auto trouble = [](const Snapshot&) { return std::string("the system bus cannot be reached"); };
    now.running = false;
    EXPECT_EQ(ChangeWriter(plain, trouble).begin(now, time),
              "22:13:20.123  wifi        on, the system bus cannot be reached\n");
    EXPECT_NE(
        ChangeWriter(asJson, trouble).begin(now, time).find("\"why\":\"the system bus cannot be reached\""),
        std::string::npos);
    now.enabled = false;
    EXPECT_EQ(ChangeWriter(plain, trouble).begin(now, time),
              "22:13:20.123  wifi        off, wpa_supplicant does not run\n");
}

// The list leaves out the network in use.
TEST_F(ChangeWriterTest, DoesNotTellThatTheNetworkInUseDisappears) {
    ChangeWriter writer(plain);
    before.networks = {network("Home", -50, SecurityMode::none), network("Office", -60, SecurityMode::none)};
    now = before;
    now.connection.info = connectedTo("Home", -50);
    writer.change(before, now, time);
    before = now;
    now.networks = {network("Office", -60, SecurityMode::none)};
    EXPECT_EQ(writer.change(before, now, time), "");
    before = now;
    now.connection = {};
    writer.change(before, now, time);
    before = now;
    now.networks.push_back(network("Home", -50, SecurityMode::none));
    EXPECT_EQ(writer.change(before, now, time), "");
    before = now;
    now.networks.pop_back();
    EXPECT_EQ(writer.change(before, now, time),
              "22:13:20.123  network     - ####  -50 dBm  open            \"Home\"\n");
}

TEST_F(ChangeWriterTest, TellsHowTheListChangedNotTheWholeList) {
    before.networks = {network("Same", -50, SecurityMode::none), network("Gone", -51, SecurityMode::none),
                       network("Weaker", -52, SecurityMode::wep)};
    now.networks = {network("Same", -50, SecurityMode::none), network("New", -53, SecurityMode::wpaPsk),
                    network("Weaker", -80, SecurityMode::wep, true)};
    EXPECT_EQ(text(now),
              "22:13:20.123  network     - ####  -51 dBm  open            \"Gone\"\n"
              "22:13:20.123  network     + ####  -53 dBm  WPA personal    \"New\"\n"
              "22:13:20.123  network     ~ #...  -80 dBm  WEP             \"Weaker\", saved, was -52 dBm, "
              "was not saved\n");
    EXPECT_NE(json(now).find("\"event\":\"network\",\"change\":\"disappeared\",\"ssid\":\"Gone\""),
              std::string::npos)
        << json(now);
}

TEST_F(ChangeWriterTest, IsSilentAboutWhatStaysTheSame) {
    before.connection.info = now.connection.info = connectedTo("Home", -50);
    before.networks = now.networks = {network("Office", -60, SecurityMode::rsnPsk, true)};
    before.scanning = now.scanning = true;
    EXPECT_EQ(text(now), "");
    now.networks.front().ssid = "Attic";
    EXPECT_EQ(ChangeWriter(plain).news(before, now, time), "");
}

TEST_F(ChangeWriterTest, NewsLeaveOutADisconnectionThatFollowsFromWifiOff) {
    before.connection.info = connectedTo("Home", -50);
    now.running = false;
    EXPECT_EQ(ChangeWriter(plain).news(before, now, time),
              "22:13:20.123  wifi        on, wpa_supplicant does not run\n");
    before = now;
    now.running = true;
    now.connection.info.disconnectSsid = "Home";
    now.connection.info.disconnectReason = ConnectionInfo::DisconnectReason::causedBySystem;
    EXPECT_EQ(ChangeWriter(plain).news(before, now, time),
              "22:13:20.123  wifi        on, wpa_supplicant runs\n");
    before = now;
    now.connection.info = connectedTo("Home", -50);
    EXPECT_EQ(ChangeWriter(plain).news(before, now, time),
              "22:13:20.123  connection  connected to \"Home\", #### -50 dBm\n");
    EXPECT_EQ(ChangeWriter(plain).news(now, before, time), "22:13:20.123  connection  not connected\n");
}

TEST_F(ChangeWriterTest, WritesOneLineOfAsciiAnObject) {
    now.networks = {network("a\nb\u202e\xff", -50, SecurityMode::none)};
    const std::string line = json(now);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    for (const char letter : line) {
        EXPECT_TRUE(letter == '\n' || (letter >= 0x20 && letter < 0x7f)) << line;
    }
    EXPECT_NE(line.find(R"("ssid":"a\nb\u202e\ufffd","ssid_hex":"610a62e280aeff")"), std::string::npos)
        << line;
}

}  // namespace
}  // namespace kaz::ctl
