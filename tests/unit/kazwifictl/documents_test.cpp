#include "kazwifictl/output/documents.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "kazwifictl/commands/connect_report.h"
#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using namespace std::chrono_literals;
using test::connectedTo;
using test::network;
using wifi::ConnectionInfo;
using wifi::SecurityMode;

TEST(Documents, HaveAHeadAndOnFailureAnError) {
    const Failure failure{ExitCode::notFound, "what", "why", "this"};
    EXPECT_EQ(oneLine(document("forget", ssidMembers("Home"), &failure)),
              R"({"format":1,"command":"forget","ok":false,"ssid":"Home","ssid_hex":"486f6d65",)"
              R"("error":{"code":5,"name":"not-found","what":"what","why":"why","try":"this"}})"
              "\n");
}

TEST(Documents, DescribeNetworks) {
    const auto rows = networkRows({network("Café", -60, SecurityMode::sae, true)}, connectedTo("Home", -48));
    EXPECT_EQ(
        oneLine(networksJson(rows)),
        R"([{"ssid":"Home","ssid_hex":"486f6d65","signal_dbm":-48,"bars":4,"security":null,"obstacle":null,"saved":true,)"
        R"("status":"connected","in_range":true},{"ssid":"Caf\u00e9","ssid_hex":"436166c3a9","signal_dbm":-60,"bars":3,)"
        R"("security":"wpa3","obstacle":null,"saved":true,"status":"disconnected","in_range":true}])"
        "\n");
}

TEST(Documents, DescribeTheConnection) {
    wifi::ConnectionDetails details;
    EXPECT_EQ(
        oneLine(connectionJson(details, Clock::now())),
        R"({"status":"disconnected","ssid":null,"ssid_hex":null,"signal_dbm":null,"security":null,"bssid":null,)"
        R"("frequency_mhz":null,"channel":null,"rate_mbit":null,"last_disconnect":null,"last_outcome":null})"
        "\n");
    const auto now = Clock::now();
    details.info = connectedTo("Home", -48);
    details.info.disconnectSsid = "Cafe";
    details.info.disconnectReason = ConnectionInfo::DisconnectReason::causedByUser;
    details.info.disconnectTime = now - 1500ms;
    details.lastOutcome = {"Cafe", wifi::Stage::online, wifi::Cause::givenUp, wifi::Certainty::certain,
                           {},     now - 1500ms};
    details.network = {SecurityMode::sae, {2, 0, 0, 0, 1, 10}, 5180, 54};
    EXPECT_EQ(
        oneLine(connectionJson(details, now)),
        R"({"status":"connected","ssid":"Home","ssid_hex":"486f6d65","signal_dbm":-48,"security":"wpa3",)"
        R"("bssid":"02:00:00:00:01:0a","frequency_mhz":5180,"channel":36,"rate_mbit":54,)"
        R"("last_disconnect":{"ssid":"Cafe","ssid_hex":"43616665","by":"user","ms_ago":1500},)"
        R"("last_outcome":{"ssid":"Cafe","ssid_hex":"43616665","cause":"given-up","certainty":"certain",)"
        R"("ms_ago":1500}})"
        "\n");
}

TEST(Documents, CarryEveryByteOfAnSsid) {
    EXPECT_EQ(oneLine(ssidMembers(std::string("a\0\xff", 3))),
              R"({"ssid":"a\u0000\ufffd","ssid_hex":"6100ff"})"
              "\n");
}

TEST(Documents, WithoutACommandHaveNullForItsName) {
    const Failure failure{ExitCode::usage, "what", "why", "this"};
    EXPECT_EQ(document({}, Json::object(), &failure).at("command"), nullptr);
}

TEST(ErrorText, BreaksAtBlanksAndNeverInsideACommand) {
    const Failure failure{ExitCode::failed, "cannot connect to \"Home\"", "the password is probably wrong",
                          "kazwifictl connect --hidden --security wpa2 Home"};
    EXPECT_EQ(errorText(failure, 40),
              "kazwifictl: cannot connect to \"Home\":\n"
              "the password is probably wrong;\n"
              "try: kazwifictl connect --hidden --security wpa2 Home");
    EXPECT_EQ(errorText(failure, 200), errorLine(failure));
    EXPECT_EQ(errorText({ExitCode::failed, "cannot scan", "it is dark", "a lamp or a very long day"}, 24),
              "kazwifictl: cannot scan:\nit is dark;\ntry: a lamp or a very\nlong day");
    EXPECT_EQ(errorText({ExitCode::failed, "cannot scan the networks", {}, {}}, 20),
              "kazwifictl: cannot\nscan the networks");
}

TEST(ErrorLine, SaysWhatAndWhyAndWhatToTryOnOneLine) {
    EXPECT_EQ(errorLine({ExitCode::failed, "cannot scan", "it is dark", "a lamp"}),
              "kazwifictl: cannot scan: it is dark; try: a lamp");
    EXPECT_EQ(errorLine({ExitCode::failed, "cannot scan", {}, {}}), "kazwifictl: cannot scan");
}

class ConnectReportTest : public testing::Test {
  protected:
    static Attempt endedBy(ConnectionInfo::Status status, std::chrono::milliseconds after,
                           const wifi::Outcome& why = {}) {
        const auto start = Clock::time_point(1h);
        Attempt attempt("Home", start);
        Snapshot before;
        before.running = true;
        Snapshot now = before;
        now.time = start;
        ConnectionInfo& info = now.connection.info;
        info.status = ConnectionInfo::Status::connectingWifi;
        info.ssid = "Home";
        attempt.see(before, now);
        before = now;
        info.status = status;
        now.connection.lastOutcome = why;
        info.ssid = status == ConnectionInfo::Status::disconnected ? "" : "Home";
        now.time = start + after;
        attempt.see(before, now);
        return attempt;
    }

    ConnectReportTest() {
        facts.ssid = "Home";
        facts.name = "\"Home\"";
        facts.what = "cannot connect to \"Home\"";
        facts.security = SecurityMode::rsnPsk;
        facts.again = "kazwifictl connect Home";
        facts.wait = 30s;
    }

    ConnectFacts facts;
    Output output{ColourChoice::never, true};
};

TEST_F(ConnectReportTest, SaysWhatTheLibraryFoundOut) {
    wifi::Outcome why{"Home", wifi::Stage::keyExchange, wifi::Cause::wrongKey, wifi::Certainty::probable, {},
                      {}};
    const Report probable =
        connectReport(endedBy(ConnectionInfo::Status::disconnected, 4s, why), facts, output);
    EXPECT_EQ(probable.failure->why, "the password is probably wrong");
    EXPECT_EQ(probable.failure->advice, "kazwifictl connect Home");
    EXPECT_EQ(probable.members.at("outcome"), "refused");
    EXPECT_EQ(probable.members.at("cause"), "wrong-key");
    EXPECT_EQ(probable.members.at("certainty"), "probable");

    why.certainty = wifi::Certainty::certain;
    EXPECT_EQ(
        connectReport(endedBy(ConnectionInfo::Status::disconnected, 4s, why), facts, output).failure->why,
        "the password is wrong");

    why.cause = wifi::Cause::full;
    const Report full = connectReport(endedBy(ConnectionInfo::Status::disconnected, 4s, why), facts, output);
    EXPECT_EQ(full.failure->why, "the access point is full");
    EXPECT_EQ(full.failure->advice, "trying again later");
}

TEST_F(ConnectReportTest, AnAttemptWithoutAnAccessPointIsNotAnswering) {
    const wifi::Outcome why{
        "Home", wifi::Stage::requested, wifi::Cause::outOfRange, wifi::Certainty::certain, {}, {}};
    const Report report =
        connectReport(endedBy(ConnectionInfo::Status::disconnected, 4s, why), facts, output);
    EXPECT_EQ(report.members.at("outcome"), "not-answering");
    EXPECT_EQ(report.failure->why, "no access point with this name is in range");
}

TEST_F(ConnectReportTest, SuccessHasNoCause) {
    const Report report = connectReport(endedBy(ConnectionInfo::Status::connected, 2s), facts, output);
    EXPECT_TRUE(report.members.at("cause").is_null());
    EXPECT_TRUE(report.members.at("certainty").is_null());
}

TEST_F(ConnectReportTest, FailsWhenTheConnectionCouldNotBeSaved) {
    const Attempt connected = endedBy(ConnectionInfo::Status::connected, 2s);
    EXPECT_FALSE(connectReport(connected, facts, output).failure);
    facts.saveFailed = true;
    const Report report = connectReport(connected, facts, output);
    ASSERT_TRUE(report.failure);
    EXPECT_EQ(report.failure->code, ExitCode::failed);
    EXPECT_EQ(report.members.at("outcome"), "connected");
    EXPECT_EQ(report.members.at("saved"), false);
}

TEST_F(ConnectReportTest, SaysThatANetworkWasNotKept) {
    facts.kept = false;
    const Report report = connectReport(endedBy(ConnectionInfo::Status::disconnected, 4s), facts, output);
    EXPECT_EQ(report.text, "\"Home\" is not saved.\n");
    EXPECT_EQ(report.members.at("saved"), false);
}

}  // namespace
}  // namespace kaz::ctl
