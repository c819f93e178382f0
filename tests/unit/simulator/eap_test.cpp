#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

class Eap : public DeviceTest {
  protected:
    void startCampus() {
        startInRangeOf({{.ssid = "Campus",
                         .security = Security::eap,
                         .accounts = {{"ada", "engine", "PEAP", "MSCHAPV2"}}}});
    }

    static Settings login(const std::string& identity, const std::string& password) {
        return {{"ssid", "Campus"},     {"key_mgmt", "WPA-EAP"}, {"identity", identity},
                {"password", password}, {"eap", "PEAP"},         {"phase2", "auth=MSCHAPV2"}};
    }

    std::vector<std::pair<std::string, std::string>> eapSignals() {
        std::vector<std::pair<std::string, std::string>> result;
        for (const Signal& signal : client_->signals()) {
            if (signal.member == "EAP") {
                result.emplace_back(signal.arguments.at(0), signal.arguments.at(1));
            }
        }
        return result;
    }
};

TEST_F(Eap, ConnectsAKnownIdentityWithItsPassword) {
    startCampus();
    select(addNetwork(login("ada", "engine")));
    ASSERT_TRUE(client_->becomes("State", "completed"));
    EXPECT_THAT(eapSignals(), ElementsAre(Pair("started", ""), Pair("accept proposed method", "PEAP"),
                                          Pair("remote certificate verification", "success"),
                                          Pair("completion", "success")));
    EXPECT_EQ(get("CurrentAuthMode"), "WPA2/IEEE 802.1X/EAP");
}

TEST_F(Eap, RefusesAWrongPasswordAndDisconnects) {
    startCampus();
    select(addNetwork(login("ada", "difference")));
    ASSERT_TRUE(client_->becomes("State", "disconnected"));
    EXPECT_THAT(eapSignals(), ElementsAre(Pair("started", ""), Pair("accept proposed method", "PEAP"),
                                          Pair("completion", "failure")));
    EXPECT_EQ(get("DisconnectReason"), 23);
}

TEST_F(Eap, RefusesAServerOfAnotherCa) {
    startCampus();
    Settings verifying = login("ada", "engine");
    verifying.emplace_back("ca_cert", "/ca.pem");
    select(addNetwork(verifying));
    ASSERT_TRUE(client_->becomes("State", "disconnected"));
    EXPECT_THAT(eapSignals(),
                ElementsAre(Pair("started", ""), Pair("accept proposed method", "PEAP"),
                            Pair("remote certificate verification", "self-signed certificate"),
                            Pair("local TLS alert", "unknown CA"), Pair("completion", "failure")));
}

TEST_F(Eap, MethodsAreThoseOfTheDevice) {
    start({.neighbourhood = {.eapMethods = {"TLS", "PEAP", "PEAP"}}});
    EXPECT_EQ(client_->get(supplicantRoot, "EapMethods"), json({"TLS", "PEAP", "PEAP"}));
    EXPECT_THROW(addNetwork({{"ssid", "a"}, {"eap", "TTLS"}}), CallFailed);
}

}  // namespace
}  // namespace kaz::sim::test
