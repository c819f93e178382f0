// When the library no longer needs a secret, nothing of it remains in the memory of the process.
#include "integration/simulated_device/secret_holder.h"
#include "support/device_fixture/device_fixture.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kaz::test {
namespace {

using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Own = SecretHolder::Own;
using Places = std::vector<std::string>;

class SecretsInMemory : public DeviceFixture {
  protected:
    void SetUp() override {
        start();
        user().leave();  // another process is the user
        begin();
    }

    void begin() { holder_ = std::make_unique<SecretHolder>(logFile()); }

    const SecretHolder& holder() const { return *holder_; }
    std::string logFile() const { return own_ / "log"; }

    // Waits until all earlier requests have run and their tasks are destroyed.
    void finish() {
        holder().scan();
        ASSERT_TRUE(waitForCall("Scan"));
    }

    void orderSilence(const std::string& member) {
        device().orderFault({.peer = "supplicant", .member = member, .kind = sim::FaultKind::noReply});
    }

    void expectGone(const ConnectionSettings& asked) const {
        for (const std::string& secret : {asked.password, asked.identity, asked.anonymousIdentity}) {
            if (!secret.empty()) {
                EXPECT_EQ(holder().places(secret), Places{}) << secret.substr(0, 32);
            }
        }
    }

    static ConnectionSettings office() {
        ConnectionSettings asked = settings("Office", SecurityMode::enterprise, passphrase);
        asked.identity = "Identity~marked";
        asked.anonymousIdentity = "Anonymous~marked";
        return asked;
    }
    static ConnectionSettings home() { return settings("Home", SecurityMode::rsnPsk, passphrase); }

    // A long text, no piece of which occurs in memory by chance.
    static std::string marked(std::size_t size) {
        std::string text;
        while (text.size() < size) {
            text += "~mar~ked~";
        }
        text.resize(size);
        return text;
    }

    inline static const std::string passphrase = "Marked~for~the~search";

  private:
    TemporaryFolder own_;
    std::unique_ptr<SecretHolder> holder_;
};

TEST_F(SecretsInMemory, SecretsAreFoundInAProcessThatKeepsThem) {
    EXPECT_EQ(holder().places(passphrase), Places{});
    ASSERT_EQ(holder().connect(home(), Own::kept), ConnectResult::ok);
    finish();
    EXPECT_NE(holder().places(passphrase), Places{});
}

// A passphrase of 16 bytes is the last field that makes its message grow. If a message grows after the secret was
// written, sd-bus frees the former memory without wiping it, and only sd-bus could change that.
TEST_F(SecretsInMemory, SecretsAreGoneOnceTheRequestIsDone) {
    constexpr char notText = '\xff';
    for (const auto& [mode, password] : std::vector<std::pair<SecurityMode, std::string>>{
             {SecurityMode::rsnPsk, passphrase},
             {SecurityMode::rsnPsk, "Mar~k1ed-with-16"},
             {SecurityMode::wpaPsk, marked(63)},
             {SecurityMode::sae, "Mar~k2ed-with-16"},
             {SecurityMode::sae, marked(1024)},
             {SecurityMode::wep, "~M3~d"},
             {SecurityMode::wep, "Mar~k4ed-wep."},
             {SecurityMode::rsnPsk, std::string("Marked~and~not~text") + notText},
         }) {
        for (const bool hidden : {false, true}) {
            SCOPED_TRACE(password.substr(0, 32) + (hidden ? ", hidden" : ""));
            begin();
            device().forgetCalls();
            ConnectionSettings asked = settings("Home", mode, password);
            asked.hidden = hidden;
            ASSERT_EQ(holder().connect(asked), ConnectResult::ok);
            ASSERT_NO_FATAL_FAILURE(finish());
            EXPECT_EQ(callsOf("AddNetwork").size(), password.back() == notText ? 0U : 1U);
            expectGone(asked);
        }
    }
}

// The password of a private key is the last text but one of its message.
TEST_F(SecretsInMemory, ThePasswordOfAKeyIsGoneOnceTheRequestIsDone) {
    ConnectionSettings asked = office();
    asked.password.clear();
    ASSERT_EQ(holder().connect(asked, Own::wiped, {"", "", "", "/etc/key.pem", passphrase}),
              ConnectResult::ok);
    ASSERT_NO_FATAL_FAILURE(finish());
    EXPECT_EQ(callsOf("AddNetwork").size(), 1U);
    EXPECT_EQ(holder().places(passphrase), Places{});
}

TEST_F(SecretsInMemory, SecretsAreGoneWhenTheRequestIsDroppedAtTheBound) {
    holder().block();
    holder().fill();
    EXPECT_EQ(readFile(logFile()).find("tasks are waiting"), std::string::npos);
    ASSERT_EQ(holder().connect(office()), ConnectResult::ok);
    EXPECT_NE(readFile(logFile()).find("4096 tasks are waiting, dropping"), std::string::npos);
    expectGone(office());
}

TEST_F(SecretsInMemory, SecretsAreGoneWhenTheManagerEndsBeforeTheRequest) {
    orderSilence("Scan");
    for (int i = 0; i < 16; ++i) {  // of ten seconds each
        holder().scan();
    }
    ASSERT_TRUE(waitForCall("Scan"));
    ASSERT_EQ(holder().connect(office()), ConnectResult::ok);
    EXPECT_NE(holder().places(office().identity), Places{});  // it waits
    holder().endManager();
    EXPECT_TRUE(callsOf("AddNetwork").empty());
    expectGone(office());
}

TEST_F(SecretsInMemory, SecretsAreGoneWhenTheManagerEndsDuringTheRequest) {
    orderSilence("AddNetwork");
    ASSERT_EQ(holder().connect(home()), ConnectResult::ok);
    ASSERT_TRUE(waitForCall("AddNetwork"));
    EXPECT_NE(holder().places(passphrase), Places{});  // the message waits for its answer
    holder().endManager();
    expectGone(home());
}

}  // namespace
}  // namespace kaz::test
