#include "support/message_text/message_text.h"
#include "unit/communicator/communicator_fixture.h"

#include <vector>

namespace kaz::wifi {
namespace {

struct Case {
    const char* what;
    ConnectionSettings settings;
    std::string dictionary;
    Certificates certificates = {};
};

ConnectionSettings settings(SecurityMode mode) {
    ConnectionSettings made = openNetwork("Home");
    made.securityMode = mode;
    made.password = "pass\"word";
    made.identity = "anna@example.com";
    return made;
}

ConnectionSettings empty(SecurityMode mode) {
    ConnectionSettings made;
    made.securityMode = mode;
    return made;
}

ConnectionSettings hidden(ConnectionSettings settings) {
    settings.hidden = true;
    return settings;
}

ConnectionSettings enterprise(const std::string& eapMethod, const std::string& phase2Method,
                              const std::string& anonymousIdentity) {
    ConnectionSettings made = settings(SecurityMode::enterprise);
    made.eapMethod = eapMethod;
    made.phase2Method = phase2Method;
    made.anonymousIdentity = anonymousIdentity;
    return made;
}

const std::string phase1 = R"("phase1": <"tls_disable_tlsv1_0=0 tls_disable_tlsv1_1=0">)";
const std::string wpaPsk =
    R"({"ieee80211w": <i1>, "key_mgmt": <"WPA-PSK">, "psk": <"pass\"word">, "ssid": <"Home">})";
const std::string hiddenWpaPsk =
    R"({"ieee80211w": <i1>, "key_mgmt": <"WPA-PSK">, "psk": <"pass\"word">, "scan_ssid": <i1>, "ssid": <"Home">})";
const std::string eapUpToPhase1 =
    R"({"identity": <"anna@example.com">, "ieee80211w": <i1>, "key_mgmt": <"WPA-EAP">, )"
    R"("password": <"pass\"word">, )" +
    phase1;
const std::string plainEap = eapUpToPhase1 + R"(, "ssid": <"Home">})";
const std::string hiddenEap = eapUpToPhase1 + R"(, "scan_ssid": <i1>, "ssid": <"Home">})";

const std::vector<Case> cases{
    {"open", settings(SecurityMode::none),
     R"({"auth_alg": <"OPEN">, "key_mgmt": <"NONE">, "ssid": <"Home">})"},
    {"open, hidden", hidden(settings(SecurityMode::none)),
     R"({"auth_alg": <"OPEN">, "key_mgmt": <"NONE">, "scan_ssid": <i1>, "ssid": <"Home">})"},
    {"WEP", settings(SecurityMode::wep),
     R"({"key_mgmt": <"NONE">, "ssid": <"Home">, "wep_key0": <"pass\"word">})"},
    {"WEP, hidden", hidden(settings(SecurityMode::wep)),
     R"({"key_mgmt": <"NONE">, "scan_ssid": <i1>, "ssid": <"Home">, "wep_key0": <"pass\"word">})"},
    {"WPA", settings(SecurityMode::wpaPsk), wpaPsk},
    {"WPA, hidden", hidden(settings(SecurityMode::wpaPsk)), hiddenWpaPsk},
    {"WPA2", settings(SecurityMode::rsnPsk), wpaPsk},
    {"WPA2, hidden", hidden(settings(SecurityMode::rsnPsk)), hiddenWpaPsk},
    {"WPA3", settings(SecurityMode::sae),
     R"({"ieee80211w": <i2>, "key_mgmt": <"SAE">, "sae_password": <"pass\"word">, "ssid": <"Home">})"},
    {"WPA3, hidden", hidden(settings(SecurityMode::sae)),
     R"({"ieee80211w": <i2>, "key_mgmt": <"SAE">, "sae_password": <"pass\"word">, "scan_ssid": <i1>, "ssid": <"Home">})"},
    {"enterprise", enterprise("PEAP", "MSCHAPV2", "nobody@example.com"),
     R"({"anonymous_identity": <"nobody@example.com">, "eap": <"PEAP">, "identity": <"anna@example.com">, )"
     R"("ieee80211w": <i1>, "key_mgmt": <"WPA-EAP">, "password": <"pass\"word">, )" +
         phase1 + R"(, "phase2": <"auth=MSCHAPV2">, "ssid": <"Home">})"},
    {"enterprise without methods", enterprise("", "", ""), plainEap},
    {"enterprise, hidden", hidden(enterprise("", "", "")), hiddenEap},
    {"second form of enterprise", settings(SecurityMode::enterpriseVariant), plainEap},
    {"second form of enterprise, hidden", hidden(settings(SecurityMode::enterpriseVariant)), hiddenEap},
    {"enterprise with a phase 2 alone", enterprise("", "GTC", ""),
     R"({"identity": <"anna@example.com">, "ieee80211w": <i1>, "key_mgmt": <"WPA-EAP">, "password": <"pass\"word">, )" +
         phase1 + R"(, "phase2": <"auth=GTC">, "ssid": <"Home">})"},
    {"enterprise with a CA",
     settings(SecurityMode::enterprise),
     R"({"ca_cert": <"/ca.pem">, "domain_suffix_match": <"example.org">, )" + plainEap.substr(1),
     {"/ca.pem", "example.org", "", "", "not used without a key"}},
    {"enterprise with everything",
     enterprise("TLS", "", ""),
     R"({"ca_cert": <"/ca.pem">, "client_cert": <"/own \"1\".pem">, "domain_suffix_match": <"example.org">, )"
     R"("eap": <"TLS">, )" +
         eapUpToPhase1.substr(1) +
         R"(, "private_key": <"/key">, "private_key_passwd": <"key\"word">, "ssid": <"Home">})",
     {"/ca.pem", "example.org", "/own \"1\".pem", "/key", "key\"word"}},
    {"second form of enterprise with a CA",
     settings(SecurityMode::enterpriseVariant),
     R"({"ca_cert": <"/ca.pem">, )" + plainEap.substr(1),
     {"/ca.pem", "", "", "", ""}},
    {"another network with certificates",
     settings(SecurityMode::rsnPsk),
     wpaPsk,
     {"/ca.pem", "example.org", "/own.pem", "/key", "key"}},
    {"unsupported", settings(SecurityMode::unsupported), R"({"ssid": <"Home">})"},
    {"unsupported, hidden", hidden(settings(SecurityMode::unsupported)),
     R"({"scan_ssid": <i1>, "ssid": <"Home">})"},
    {"outside the enumeration", settings(static_cast<SecurityMode>(8)), R"({"ssid": <"Home">})"},
    {"empty everything", {}, R"({"auth_alg": <"OPEN">, "key_mgmt": <"NONE">, "ssid": <"">})"},
    {"an enterprise network with nothing filled in", empty(SecurityMode::enterprise),
     R"({"identity": <"">, "ieee80211w": <i1>, "key_mgmt": <"WPA-EAP">, "password": <"">, )" + phase1 +
         R"(, "ssid": <"">})"},
    {"texts to be escaped elsewhere", openNetwork("\"a\\b\" \xc3\xa9\n"),
     R"({"auth_alg": <"OPEN">, "key_mgmt": <"NONE">, "ssid": <"\"a\\b\" \xc3\xa9\x0a">})"},
};

class AddNetwork : public CommunicatorTest {
  protected:
    std::unique_ptr<Communicator::ConfiguredNetwork> add(const ConnectionSettings& wanted,
                                                         const Certificates& certificates = {}) {
        return onLoop([&] { return communicator->addNetworkSync(wanted, certificates); });
    }
};

TEST_F(AddNetwork, AddNetworkSendsExactlyTheSettingsOfEachSecurityMode) {
    onInterface("AddNetwork", reply("o", networkPath));
    startAttached();
    for (const Case& test : cases) {
        EXPECT_NE(add(test.settings, test.certificates), nullptr) << test.what;
        EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("AddNetwork", test.dictionary))) << test.what;
    }
}

TEST_F(AddNetwork, AddNetworkReturnsAHandleWithPathAndSsid) {
    onInterface("AddNetwork", reply("o", networkPath));
    startAttached();
    const auto network = add(settings(SecurityMode::rsnPsk));
    ASSERT_NE(network, nullptr);
    EXPECT_EQ(network->getSsid(), "Home");
    EXPECT_EQ(network->id(), std::hash<std::string>{}(networkPath));
    EXPECT_THAT(takeLog(), ElementsAre(debug("Added network " + networkPath)));
}

TEST_F(AddNetwork, RefusedAddNetworkReturnsNull) {
    onInterface("AddNetwork", errorReply("fi.w1.wpa_supplicant1.InvalidArgs", "x"));
    startAttached();
    EXPECT_EQ(add(settings(SecurityMode::none)), nullptr);
    EXPECT_FALSE(log.contains("Added network"));
}

TEST_F(AddNetwork, AddNetworkReplyWithoutPathReturnsNull) {
    startAttached();
    for (const Answer& answer : {reply("s", networkPath), reply("")}) {
        onInterface("AddNetwork", answer);
        EXPECT_EQ(add(settings(SecurityMode::none)), nullptr);
        EXPECT_THAT(takeLog(), ElementsAre(warning(decodingFailed + noSuchType)));
    }
}

TEST_F(AddNetwork, TextThatCannotBeSentIsLoggedAndNeverTruncated) {
    onInterface("AddNetwork", reply("o", networkPath));
    startAttached();
    for (const std::string& ssid :
         {std::string("Ho\0me", 5), std::string("\0", 1), std::string("Caf\xe9"), std::string(32, '\xff')}) {
        EXPECT_EQ(add(openNetwork(ssid)), nullptr);
        EXPECT_THAT(takeCalls(), IsEmpty());
        EXPECT_THAT(takeLog(),
                    ElementsAre(warning("Error while encoding dbus data. Details: Unable to write value: "
                                        "Unable to write to variant: Invalid argument")));
    }
    EXPECT_NE(add(openNetwork("Home")), nullptr) << "the connection is still good";
}

TEST_F(AddNetwork, SupplicantReplyPutsNoSecretIntoTheLog) {
    onInterface("AddNetwork", [](sd_bus_message* call) {
        return errorReply("fi.w1.wpa_supplicant1.InvalidArgs", "Cannot use " + test::messageText(call))(call);
    });
    startAttached();
    ConnectionSettings secret = openNetwork("Home");
    secret.password = "hunter2hunter2";
    secret.identity = "secret-identity";
    secret.anonymousIdentity = "secret-outer-identity";
    for (const SecurityMode mode :
         {SecurityMode::wep, SecurityMode::wpaPsk, SecurityMode::rsnPsk, SecurityMode::sae,
          SecurityMode::enterprise, SecurityMode::enterpriseVariant}) {
        secret.securityMode = mode;
        EXPECT_EQ(add(secret), nullptr);
        EXPECT_THAT(takeCalls(), ElementsAre(testing::HasSubstr("hunter2hunter2")));
    }
    EXPECT_EQ(log.records().size(), 6U);
    EXPECT_FALSE(log.contains("hunter2"));
    EXPECT_FALSE(log.contains("secret"));
}

TEST_F(AddNetwork, SecretThatCannotBeSentStaysOutOfTheLog) {
    startAttached();
    ConnectionSettings secret = settings(SecurityMode::sae);
    secret.password = "hunter2\xff";
    EXPECT_EQ(add(secret), nullptr);
    EXPECT_EQ(log.records().size(), 1U);
    EXPECT_FALSE(log.contains("hunter2"));
}

}  // namespace
}  // namespace kaz::wifi
