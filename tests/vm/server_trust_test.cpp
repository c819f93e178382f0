// Enterprise networks whose authentication server is verified, and a rogue with a certificate of its own.
#include "support/printed_values/printed_details.h"
#include "vm/access_point.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <chrono>
#include <string>

namespace kaz::vm {
namespace {

class ServerTrust : public DeviceTest {
  protected:
    bool connects(const wifi::ConnectionSettings& settings, const wifi::Certificates& certificates) {
        return manager().connect(settings, certificates) == wifi::ConnectResult::ok &&
               device().reaches(Status::connected, settings.ssid);
    }

    // Whether the attempt ends without a connection. Its first record still has the end of the attempt before.
    bool fails(const wifi::ConnectionSettings& settings, const wifi::Certificates& certificates) {
        device().clearHistory();
        return manager().connect(settings, certificates) == wifi::ConnectResult::ok &&
               device().passes([](const auto& info) { return info.status == Status::connectingWifi; }) &&
               device().passes([](const auto& info) { return info.status == Status::disconnected; }) &&
               !device().passes([](const auto& info) { return info.status > Status::connectingWifi; },
                                std::chrono::seconds(0));
    }

    // Whether the cause is that the device did not accept the server's certificate.
    bool isUntrusted() {
        return device().eventually([this] {
            const wifi::Outcome last = manager().connectionDetails().lastOutcome;
            return last.ssid == peapNetwork.ssid && last.stage == wifi::Stage::eap &&
                   last.cause == wifi::Cause::serverUntrusted && last.certainty == wifi::Certainty::certain &&
                   last.evidence.eap == wifi::Evidence::Eap::serverRefused;
        });
    }

    static wifi::ConnectionSettings anyMethod() {
        wifi::ConnectionSettings settings = peapNetwork;
        settings.eapMethod.clear();
        settings.phase2Method.clear();
        return settings;
    }

    AccessPoint server{"eap"};
    const wifi::Certificates trusted{"/etc/certificates/ca.pem", "kaz.test", "", "", ""};
};

TEST_F(ServerTrust, TheServerOfTheRightDomainAndCaIsTrusted) {
    server.present("server");
    ASSERT_TRUE(connects(peapNetwork, trusted));
    EXPECT_TRUE(server.sawInnerExchange());
    ASSERT_TRUE(device().eventually([] { return savedNetwork("Kaz Enterprise").has_value(); }));
    EXPECT_EQ(savedNetwork("Kaz Enterprise")->at("ca_cert"), "\"/etc/certificates/ca.pem\"");
    EXPECT_EQ(savedNetwork("Kaz Enterprise")->at("domain_suffix_match"), "\"kaz.test\"");
    manager().disconnect();
    ASSERT_TRUE(device().reaches(Status::disconnected));
    ASSERT_TRUE(connects(anyMethod(), trusted)) << "the server chooses the method";
}

TEST_F(ServerTrust, ARogueGetsThePasswordExchangeOfAnUnverifiedConnection) {
    server.present("rogue");
    ASSERT_TRUE(device().connects(peapNetwork));
    EXPECT_TRUE(server.sawInnerExchange());
}

TEST_F(ServerTrust, ARogueIsRefusedAndNeverSeesThePasswordExchange) {
    server.present("rogue");
    EXPECT_TRUE(fails(peapNetwork, trusted));
    EXPECT_TRUE(isUntrusted()) << ::testing::PrintToString(manager().connectionDetails().lastOutcome);
    EXPECT_TRUE(fails(anyMethod(), trusted));
    EXPECT_TRUE(isUntrusted()) << ::testing::PrintToString(manager().connectionDetails().lastOutcome);
    EXPECT_TRUE(fails(peapNetwork, {"/etc/certificates/ca.pem", "", "", "", ""}));
    EXPECT_FALSE(server.sawInnerExchange());
}

TEST_F(ServerTrust, OfOneCaOnlyTheServerOfTheDomainIsTrusted) {
    server.present("stray");
    EXPECT_TRUE(fails(peapNetwork, trusted));
    EXPECT_FALSE(server.sawInnerExchange());
    EXPECT_TRUE(connects(peapNetwork, {"/etc/certificates/ca.pem", "", "", "", ""}))
        << "without a domain every server of the CA is trusted";
}

TEST_F(ServerTrust, AMissingFileOfTheCaTrustsNobody) {
    EXPECT_TRUE(fails(peapNetwork, {"/etc/certificates/missing.pem", "kaz.test", "", "", ""}));
}

TEST_F(ServerTrust, ARogueThatAsksForThePasswordItselfIsAnsweredOnlyWithoutCertificates) {
    server.reconfigure("eap_user_file=/etc/hostapd/rogue-users");
    const std::string given = "accept proposed method, parameter: GTC";
    EXPECT_TRUE(fails(anyMethod(), trusted));
    EXPECT_FALSE(log().contains(given));
    EXPECT_TRUE(fails(anyMethod(), {}));
    EXPECT_TRUE(log().contains(given));
}

TEST_F(ServerTrust, ADeviceWithACertificateNeedsNoPassword) {
    wifi::ConnectionSettings settings = enterprise("", "", "device", "");
    settings.anonymousIdentity.clear();
    const wifi::Certificates own{"/etc/certificates/ca.pem", "kaz.test", "/etc/certificates/device.pem",
                                 "/etc/certificates/device.key", "key-secret"};
    ASSERT_TRUE(connects(settings, own));
    EXPECT_FALSE(log().contains("key-secret"));
}

}  // namespace
}  // namespace kaz::vm
