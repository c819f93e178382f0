#include "manager/certificate_rules.h"
#include "unit/manager/engine_fixture.h"

#include <optional>

namespace kaz::test {
namespace {

using wifi::AcceptedMethods;
using wifi::Certificates;

const AcceptedMethods everyMethod = wifi::usableEapMethods({"MD5", "MSCHAPV2", "PEAP", "PWD", "TLS", "TTLS"});

ConnectionSettings campus(const std::string& method = {}) {
    ConnectionSettings settings = settingsFor("Campus", SecurityMode::enterprise);
    settings.eapMethod = method;
    return settings;
}

Certificates ca(const std::string& file, const std::string& domain = {}) {
    return {file, domain, {}, {}, {}};
}

Certificates client(const std::string& certificate, const std::string& key) {
    return {{}, {}, certificate, key, {}};
}

struct CertificateRow {
    std::string what;
    ConnectionSettings settings;
    Certificates certificates;
    ConnectResult verdict;
};

using CertificateRows = std::vector<CertificateRow>;

CertificateRows fileRows() {
    const auto ok = ConnectResult::ok;
    const auto invalid = ConnectResult::fileInvalid;
    const std::string nul(1, '\0');
    return {
        {"a CA", campus(), ca("/ca.pem"), ok},
        {"a path of 900 bytes", campus(), ca('/' + std::string(899, 'x')), ok},
        {"a path of 901 bytes", campus(), ca('/' + std::string(900, 'x')), invalid},
        {"a relative path", campus(), ca("ca.pem"), invalid},
        {"another form of the supplicant", campus(), ca("probe://"), invalid},
        {"a path with NUL", campus(), ca("/ca" + nul + ".pem"), invalid},
        {"a path that is not UTF-8", campus(), ca("/\xff"), invalid},
        {"a path in UTF-8", campus(), ca("/caf\xc3\xa9.pem"), ok},
        {"a relative path of the certificate", campus(), client("own.pem", "/key"), invalid},
        {"a relative path of the key", campus(), client("/own.pem", "key"), invalid},
    };
}

CertificateRows domainRows() {
    const auto ok = ConnectResult::ok;
    const auto invalid = ConnectResult::serverDomainInvalid;
    const auto row = [](const std::string& domain, ConnectResult verdict) {
        return CertificateRow{"the domain " + domain, campus(), ca("/ca.pem", domain), verdict};
    };
    return {
        row("example.org", ok),
        row("radius-1.Example.org;other_2.example.com", ok),
        row(std::string(900, 'x'), ok),
        row(std::string(901, 'x'), invalid),
        row("*.example.org", invalid),
        row("https://example.org", invalid),
        row("example.org ", invalid),
        row("b\xc3\xbc"
            "cher.example",
            invalid),
        row(std::string("a\0b", 3), invalid),
        {"a domain without a CA", campus(), ca("", "example.org"), ConnectResult::caFileMissing},
        {"a domain with nothing but a client certificate",
         campus(),
         {"", "example.org", "/own.pem", "/key", ""},
         ConnectResult::caFileMissing},
    };
}

CertificateRows keyRows() {
    const auto ok = ConnectResult::ok;
    const auto missing = ConnectResult::keyFileMissing;
    return {
        {"a certificate and its key", campus(), client("/own.pem", "/key"), ok},
        {"a key file with the certificate", campus(), client("", "/both.p12"), ok},
        {"a certificate without a key", campus(), client("/own.pem", ""), missing},
        {"TLS without a key", campus("TLS"), ca("/ca.pem"), missing},
        {"TLS", campus("TLS"), client("", "/both.p12"), ok},
        {"PEAP with a key", campus("PEAP"), client("/own.pem", "/key"), ok},
    };
}

CertificateRows eapMethodRows() {
    const auto unsupported = ConnectResult::eapMethodUnsupported;
    ConnectionSettings unknownInside = campus("PEAP");
    unknownInside.phase2Method = "CHAP";
    ConnectionSettings home = settingsFor("Home", SecurityMode::rsnPsk);
    return {
        {"PEAP", campus("PEAP"), ca("/ca.pem"), ConnectResult::ok},
        {"TTLS", campus("TTLS"), ca("/ca.pem"), ConnectResult::ok},
        {"a method without certificates", campus("PWD"), ca("/ca.pem"), unsupported},
        {"another method without certificates", campus("MSCHAPV2"), ca("/ca.pem"), unsupported},
        {"TLS without any certificate", campus("TLS"), {}, unsupported},
        {"a key's password alone, which is nothing", campus("PWD"), {"", "", "", "", "x"}, ConnectResult::ok},
        {"an unknown inner method", unknownInside, ca("ca.pem"), ConnectResult::phase2MethodUnsupported},
        {"certificates of a network without EAP", home, ca("ca.pem", "*"), ConnectResult::ok},
    };
}

TEST(CertificateRules, FirstBrokenRuleDecidesTheVerdict) {
    for (const CertificateRows& rows : {fileRows(), domainRows(), keyRows(), eapMethodRows()}) {
        for (const CertificateRow& row : rows) {
            EXPECT_EQ(wifi::validateWithCertificates(row.settings, row.certificates, everyMethod),
                      row.verdict)
                << row.what;
        }
    }
}

TEST(CertificateRules, VerdictsHaveFixedNumbers) {
    EXPECT_EQ(static_cast<int>(ConnectResult::fileInvalid), 9);
    EXPECT_EQ(static_cast<int>(ConnectResult::caFileMissing), 10);
    EXPECT_EQ(static_cast<int>(ConnectResult::serverDomainInvalid), 11);
    EXPECT_EQ(static_cast<int>(ConnectResult::keyFileMissing), 12);
    EXPECT_EQ(static_cast<int>(ConnectResult::notSendable), 13);
}

// Otherwise the server could propose a method that hands it the password.
TEST(CertificateRules, AnEmptyMethodAllowsOnlyMethodsThatVerifyTheServer) {
    struct Expectation {
        std::set<std::string> offered;
        Certificates certificates;
        std::string allowed;
    };
    for (const auto& [offered, certificates, allowed] : std::vector<Expectation>{
             {{"MSCHAPV2", "PEAP", "TLS", "TTLS"}, ca("/ca.pem"), "PEAP TTLS"},
             {{"GTC", "PEAP"}, ca("/ca.pem"), "PEAP"},
             {{"TTLS"}, ca("/ca.pem"), "TTLS"},
             {{"PEAP", "TLS", "TTLS"}, client("", "/key"), "TLS"},
             {{"GTC", "TLS"}, ca("/ca.pem"), ""},
             {{"PEAP", "TTLS"}, client("", "/key"), ""},
         }) {
        const AcceptedMethods usable = wifi::usableEapMethods(offered);
        EXPECT_EQ(wifi::eapMethodsToAllow(campus(), certificates, usable), allowed);
        EXPECT_EQ(wifi::validateWithCertificates(campus(), certificates, usable),
                  allowed.empty() ? ConnectResult::eapMethodUnsupported : ConnectResult::ok);
    }
    EXPECT_EQ(wifi::eapMethodsToAllow(campus("TTLS"), ca("/ca.pem"), everyMethod), "TTLS");
    EXPECT_EQ(wifi::eapMethodsToAllow(campus(), {}, everyMethod), "");
    EXPECT_EQ(wifi::eapMethodsToAllow(settingsFor("Home", SecurityMode::none), ca("/ca.pem"), everyMethod),
              "");
}

class ConnectWithCertificates : public EngineTest {
  protected:
    // The method and the certificates that reach the communicator.
    void expectSent(const ConnectionSettings& settings, const Certificates& certificates,
                    const std::string& method) {
        std::optional<ConnectionSettings> seen;
        Certificates with;
        communicator->onAddNetwork = [&](const ConnectionSettings& given, const Certificates& givenWith) {
            seen = given;
            with = givenWith;
        };
        EXPECT_EQ(engine->connect(settings, certificates), ConnectResult::ok);
        communicator->runTasks();
        communicator->onAddNetwork = nullptr;
        ASSERT_TRUE(seen);
        EXPECT_EQ(seen->eapMethod, method);
        EXPECT_EQ(seen->password, settings.password);
        EXPECT_EQ(with.caFile, certificates.caFile);
        EXPECT_EQ(with.serverDomain, certificates.serverDomain);
        EXPECT_EQ(with.clientFile, certificates.clientFile);
        EXPECT_EQ(with.keyFile, certificates.keyFile);
        EXPECT_EQ(with.keyPassword, certificates.keyPassword);
    }
};

TEST_F(ConnectWithCertificates, CertificatesReachTheCommunicator) {
    stack->eapMethods = {"PEAP", "TLS", "TTLS"};
    startWithSupplicant();
    expectSent(campus(), ca("/ca.pem", "example.org"), "PEAP TTLS");
    expectSent(campus("TTLS"), ca("/ca.pem"), "TTLS");
    expectSent(campus(), {"/ca.pem", "example.org", "/own.pem", "/key", "secret"}, "TLS");
    expectSent(campus(), {}, "");
}

TEST_F(ConnectWithCertificates, RefusedRequestPostsNothing) {
    stack->eapMethods = {"PEAP", "TLS", "TTLS"};
    startWithSupplicant();
    EXPECT_EQ(engine->connect(campus(), ca("ca.pem")), ConnectResult::fileInvalid);
    EXPECT_EQ(engine->validate(campus(), ca("ca.pem")), ConnectResult::fileInvalid);
    EXPECT_EQ(engine->validate(campus(), ca("/ca.pem")), ConnectResult::ok);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(ConnectWithCertificates, NoMethodIsAcceptedUntilTheSupplicantIsAttached) {
    stack->eapMethods = {"PEAP"};
    start();
    EXPECT_EQ(engine->connect(campus(), ca("/ca.pem")), ConnectResult::eapMethodUnsupported);
    attachSupplicant();
    EXPECT_EQ(engine->connect(campus(), ca("/ca.pem")), ConnectResult::ok);
}

}  // namespace
}  // namespace kaz::test
