// Where a secret may go: to the supplicant and its file, and nowhere else.
#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

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
            } else if (point.ssid == "Hidden") {
                point.password = hiddenPassphrase;
            } else if (point.ssid == "Office") {
                point.accounts = {{identity, eapPassword, "", ""}};
            }
        }
    }
    ~Secrets() override { ::unsetenv("KAZ_METRICS_FILE"); }

    // The first Manager of the process decides which file all use.
    static std::filesystem::path metrics() {
        static const TemporaryFolder folder;
        return folder / "metrics.prom";
    }

    ConnectionSettings home() const { return settings("Home", SecurityMode::rsnPsk, passphrase); }

    ConnectionSettings hidden() const {
        ConnectionSettings made = settings("Hidden", SecurityMode::rsnPsk, hiddenPassphrase);
        made.hidden = true;
        return made;
    }

    ConnectionSettings office(const std::string& password) const {
        ConnectionSettings made = settings("Office", SecurityMode::enterprise, password);
        made.identity = identity;
        made.anonymousIdentity = anonymousIdentity;
        made.eapMethod = "PEAP";
        made.phase2Method = "MSCHAPV2";
        return made;
    }

    ConnectionSettings plainOffice(SecurityMode mode) const {
        ConnectionSettings made = settings("Office", mode, eapPassword);
        made.identity = identity;
        return made;
    }

    sim::FaultId orderFault(sim::FaultKind kind, const std::string& text = {}) {
        return device().orderFault(
            {.peer = "supplicant", .member = "AddNetwork", .nth = 1, .kind = kind, .errorText = text});
    }

    // Connects and waits until the attempt has ended in this status.
    void attempt(const ConnectionSettings& target, Status end = Status::connected) {
        SCOPED_TRACE(target.ssid);
        const auto before = static_cast<std::ptrdiff_t>(user().history().size());
        ASSERT_EQ(manager().connect(target), ConnectResult::ok);
        ASSERT_TRUE(user().waitUntil([&] {
            const auto history = user().history();
            const auto begun =
                std::find_if(history.begin() + before, history.end(), [&](const ConnectionInfo& info) {
                    return info.ssid == target.ssid && info.status == Status::connectingWifi;
                });
            return begun != history.end() && history.back().status == end;
        }));
        collect();
    }

    // Connects and waits until this record was logged once more.
    void attemptAndFail(const ConnectionSettings& target, const std::string& record) {
        SCOPED_TRACE(record);
        const auto count = [&](const RecordingLog::Records& records) {
            return std::count_if(records.begin(), records.end(), [&](const LogRecord& each) {
                return each.text.find(record) != std::string::npos;
            });
        };
        const auto before = count(log().records());
        ASSERT_EQ(manager().connect(target), ConnectResult::ok);
        ASSERT_TRUE(log().waitFor([&](const auto& records) { return count(records) > before; }));
        collect();
    }

    // Keeps the texts that the library has published, and its gauges.
    void collect() {
        for (const ConnectionInfo& info : user().history()) {
            told_ += info.ssid + ' ' + info.disconnectSsid + '\n';
        }
        for (const auto& network : manager().networks()) {
            told_ += network.ssid + '\n';
        }
        told_ += readFile(metrics());
    }

    // Every text that left the library: what was collected, and log records of all levels.
    std::string everythingTold() {
        std::string all = told_ + readFile(metrics());
        for (const std::string& text : log().texts()) {
            all += text + '\n';
        }
        return all;
    }

    void expectNothingTold(const std::vector<std::string>& other) {
        const std::string told = everythingTold();
        for (const std::string& text : other) {  // there is something to search
            EXPECT_NE(told.find(text), std::string::npos) << text;
        }
        for (const std::string& secret :
             {passphrase, wrongPassphrase, saePassword, wepKey, identity, anonymousIdentity, eapPassword,
              wrongEapPassword, hiddenPassphrase, tornPassphrase}) {
            EXPECT_EQ(told.find(secret), std::string::npos) << secret;
        }
    }

    const std::string passphrase = "Passphrase-marked-1";
    const std::string wrongPassphrase = "Passphrase-marked-2";
    const std::string saePassword = "Sae-marked-3";
    const std::string wepKey = "WepM4";
    const std::string identity = "identity-marked-5";
    const std::string anonymousIdentity = "anonymous-marked-6";
    const std::string eapPassword = "Eap-marked-7";
    const std::string wrongEapPassword = "Eap-marked-8";
    const std::string hiddenPassphrase = "Hidden-marked-9";
    const std::string tornPassphrase = "Torn-marked-10";

  private:
    std::string told_;
};

TEST_F(Secrets, SecretsOfEveryFlowAreToldToNobodyButTheSupplicant) {
    start();
    // An error reply that repeats the passphrase.
    const auto ordered = orderFault(sim::FaultKind::error, "bad value " + passphrase);
    ASSERT_NO_FATAL_FAILURE(attemptAndFail(home(), "Call of AddNetwork"));
    EXPECT_EQ(device().timesFired(ordered), 1U);

    ASSERT_NO_FATAL_FAILURE(attempt(office(wrongEapPassword), Status::disconnected));
    ASSERT_NO_FATAL_FAILURE(
        attempt(settings("Home", SecurityMode::rsnPsk, wrongPassphrase), Status::disconnected));
    for (const ConnectionSettings& target : {
             settings("Future", SecurityMode::sae, saePassword),
             home(),
             settings("Old", SecurityMode::wep, wepKey),
             settings("Home", SecurityMode::wpaPsk, passphrase),
             hidden(),
             office(eapPassword),
             plainOffice(SecurityMode::enterprise),
             plainOffice(SecurityMode::enterpriseVariant),
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
    collect();
    user().leave();
    expectNothingTold({"Added network", "Hidden", "Office", "quarn"});
}

TEST_F(Secrets, SecretsThatCannotBeSentAreToldToNobody) {
    start();
    const std::string nul(1, '\0');
    const std::string notEncoded = "Error while encoding dbus data";
    for (const std::string& torn : {tornPassphrase + nul + "rest", tornPassphrase + "\xff"}) {
        attemptAndFail(settings("Home", SecurityMode::rsnPsk, torn), notEncoded);
        attemptAndFail(settings("Future", SecurityMode::sae, torn), notEncoded);
        attemptAndFail(office(torn), notEncoded);
        ConnectionSettings noIdentity = office(eapPassword);
        noIdentity.identity = torn;
        attemptAndFail(noIdentity, notEncoded);
    }
    EXPECT_TRUE(callsOf("AddNetwork").empty());
    user().leave();
    expectNothingTold({notEncoded});
}

TEST_F(Secrets, SecretsAreToldToNobodyWhenTheSupplicantDies) {
    start();
    orderFault(sim::FaultKind::crash);
    ASSERT_NO_FATAL_FAILURE(attemptAndFail(office(eapPassword), "Call of AddNetwork"));
    ASSERT_TRUE(user().waitForStack(false));
    for (const ConnectionSettings& target : {home(), hidden(), office(eapPassword)}) {
        ASSERT_NO_FATAL_FAILURE(attemptAndFail(target, "Can't add network"));
    }
    user().leave();
    expectNothingTold({"Call of AddNetwork", "Can't add network"});
}

TEST_F(Secrets, SecretsOfARequestWithoutAnAnswerAreToldToNobody) {
    start();
    for (const ConnectionSettings& target : {home(), office(eapPassword)}) {
        device().forgetCalls();
        orderFault(sim::FaultKind::noReply);
        ASSERT_EQ(manager().connect(target), ConnectResult::ok);
        ASSERT_TRUE(waitForCall("AddNetwork"));
        collect();
        restartUser();  // no Manager waits for an answer at its end
    }
    user().leave();
    expectNothingTold({"Call of AddNetwork"});
}

TEST_F(Secrets, SecretsOfARequestThatIsDroppedAreToldToNobody) {
    start();
    constexpr int bound = 4096;
    std::once_flag once;
    std::promise<void> blocked;
    std::promise<void> unblock;
    manager().onScanningChanged([&, goOn = unblock.get_future().share()] {
        std::call_once(once, [&] { blocked.set_value(); });
        goOn.wait();
    });
    manager().scan();
    blocked.get_future().wait();
    for (int i = 0; i < bound; ++i) {
        manager().scan();
    }
    EXPECT_EQ(manager().connect(home()), ConnectResult::ok);
    EXPECT_EQ(manager().connect(office(eapPassword)), ConnectResult::ok);
    collect();
    unblock.set_value();
    user().leave();
    EXPECT_TRUE(callsOf("AddNetwork").empty());
    expectNothingTold({"4096 tasks are waiting"});
}

}  // namespace
}  // namespace kaz::test
