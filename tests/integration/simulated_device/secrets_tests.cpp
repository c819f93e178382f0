// Where a secret may go: to the supplicant and its file, and nowhere else.
#include <stdlib.h>

#include <string>
#include <vector>

#include "device_fixture.h"

namespace kaz::test {
namespace {

using wifi::ConnectionInfo;
using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = ConnectionInfo::Status;

class Secrets : public DeviceFixture {
  protected:
    Secrets() {
        ::setenv("KAZ_METRICS_FILE", metrics().c_str(), 1);
        for (sim::AccessPoint& point : neighbourhood.accessPoints) {
            if (point.ssid == "Home") {
                point.password = passphrase;
            } else if (point.ssid == "Future") {
                point.password = saePassword;
            } else if (point.ssid == "Old") {
                point.password = wepKey;
            } else if (point.ssid == "Office") {
                point.accounts = {{identity, eapPassword, "PEAP", "MSCHAPV2"}};
            }
        }
    }
    ~Secrets() override { ::unsetenv("KAZ_METRICS_FILE"); }

    std::filesystem::path metrics() const { return own_ / "metrics.prom"; }

    ConnectionSettings office(const std::string& password) const {
        ConnectionSettings made = settings("Office", SecurityMode::enterprise, password);
        made.identity = identity;
        made.anonymousIdentity = anonymousIdentity;
        made.eapMethod = "PEAP";
        made.phase2Method = "MSCHAPV2";
        return made;
    }

    // Until the attempt has ended, well or badly.
    void attempt(const ConnectionSettings& target) {
        SCOPED_TRACE(target.ssid);
        user().forgetHistory();
        ASSERT_EQ(manager().connect(target), ConnectResult::ok);
        ASSERT_TRUE(user().waitUntil([&] {
            const auto history = user().history();
            const bool begun = std::any_of(history.begin(), history.end(), [&](const ConnectionInfo& info) {
                return info.ssid == target.ssid && info.status != Status::disconnected;
            });
            return begun && (history.back().status == Status::connected ||
                             history.back().status == Status::disconnected);
        }));
    }

    // Every text that left the library: log records of all levels, metrics, and what it publishes.
    std::string everythingTold() {
        std::string all = readFile(metrics());
        for (const std::string& text : log().texts()) {
            all += text + '\n';
        }
        for (const ConnectionInfo& info : user().history()) {
            all += info.ssid + ' ' + info.disconnectSsid + '\n';
        }
        for (const auto& network : manager().networks()) {
            all += network.ssid + '\n';
        }
        return all;
    }

    const std::string passphrase = "Passphrase-marked-1";
    const std::string wrongPassphrase = "Passphrase-marked-2";
    const std::string saePassword = "Sae-marked-3";
    const std::string wepKey = "WepM4";
    const std::string identity = "identity-marked-5";
    const std::string anonymousIdentity = "anonymous-marked-6";
    const std::string eapPassword = "Eap-marked-7";
    const std::string wrongEapPassword = "Eap-marked-8";
    const std::vector<std::string> secrets{passphrase, wrongPassphrase,   saePassword, wepKey,
                                           identity,   anonymousIdentity, eapPassword, wrongEapPassword};

  private:
    TemporaryFolder own_;
};

TEST_F(Secrets, OfEveryFlowAreToldToNobodyButTheSupplicant) {
    start();
    // An answer that repeats what it was asked.
    sim::Fault echo;
    echo.peer = "supplicant";
    echo.member = "AddNetwork";
    echo.nth = 1;
    echo.errorText = "bad value " + passphrase;
    const auto ordered = device().orderFault(echo);
    ASSERT_EQ(manager().connect(settings("Home", SecurityMode::rsnPsk, passphrase)), ConnectResult::ok);
    ASSERT_TRUE(log().waitForText(spdlog::level::warn, "Call of AddNetwork"));
    EXPECT_EQ(device().timesFired(ordered), 1U);

    for (const ConnectionSettings& target : {
             settings("Home", SecurityMode::rsnPsk, wrongPassphrase),
             settings("Home", SecurityMode::rsnPsk, passphrase),
             settings("Future", SecurityMode::sae, saePassword),
             settings("Old", SecurityMode::wep, wepKey),
             office(wrongEapPassword),
             office(eapPassword),
         }) {
        ASSERT_NO_FATAL_FAILURE(attempt(target));
    }
    // Refused by the rules, before anything is sent.
    EXPECT_NE(manager().connect(settings("", SecurityMode::rsnPsk, passphrase)), ConnectResult::ok);
    ASSERT_TRUE(waitForSaved(passphrase));  // the supplicant does know it
    manager().connectConfigured("Home");
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
    manager().forgetNetwork("Home");
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));

    const std::string told = everythingTold();
    user().leave();                                            // before the folder of its metrics goes
    EXPECT_NE(told.find("Added network"), std::string::npos);  // there is something to search
    EXPECT_NE(told.find("quarn"), std::string::npos);
    for (const std::string& secret : secrets) {
        EXPECT_EQ(told.find(secret), std::string::npos) << secret;
    }
}

}  // namespace
}  // namespace kaz::test
