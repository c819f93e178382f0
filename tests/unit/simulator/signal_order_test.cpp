#include <algorithm>

#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

class SignalOrder : public DeviceTest {
  protected:
    // Position of the first signal for which the condition holds; the number of signals when there is none.
    std::size_t position(const std::function<bool(const Signal&)>& condition) {
        const auto& all = client_->signals();
        return static_cast<std::size_t>(std::find_if(all.begin(), all.end(), condition) - all.begin());
    }

    static bool changes(const Signal& signal, const char* property) {
        return signal.interface == "org.freedesktop.DBus.Properties" &&
               signal.arguments.at(1).contains(property);
    }
};

TEST_F(SignalOrder, PutsBssAddedAndScanDoneBeforeTheListOfBsss) {
    start({accessPoint("Cafe", Security::open)});
    client_->call(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive");
    ASSERT_TRUE(client_->waitUntil([&] { return !client_->valuesOf("BSSs").empty(); }));
    const auto added = position([](const Signal& s) { return s.member == "BSSAdded"; });
    const auto done = position([](const Signal& s) { return s.member == "ScanDone"; });
    const auto list = position([](const Signal& s) { return changes(s, "BSSs"); });
    EXPECT_LT(added, done);
    EXPECT_LT(done, list);
}

TEST_F(SignalOrder, PutsTheReasonBeforeTheDisconnectedState) {
    start({accessPoint("Cafe", Security::open)});
    select(addNetwork(openNetwork("Cafe")));
    ASSERT_TRUE(reaches("completed"));
    device_->deauthenticate(7);
    ASSERT_TRUE(client_->waitUntil([&] { return !client_->valuesOf("State").empty(); }));
    EXPECT_LT(position([](const Signal& s) { return changes(s, "DisconnectReason"); }),
              position([](const Signal& s) { return changes(s, "State"); }));
}

TEST_F(SignalOrder, SetsTheCurrentNetworkWhenAuthenticatingAndTheCurrentBssWhenAssociated) {
    start({accessPoint("Cafe", Security::wpa2, "password")});
    select(addNetwork(pskNetwork("Cafe", "password")));
    ASSERT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return changes(s, "CurrentNetwork") && s.arguments.at(1).value("State", "") == "authenticating";
    }));
    ASSERT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return changes(s, "CurrentBSS") && s.arguments.at(1).value("State", "") == "associated";
    }));
}

TEST_F(SignalOrder, SendsTheInterfacesOwnSignalAfterTheStandardOne) {
    start({accessPoint("Cafe", Security::open)});
    select(addNetwork(openNetwork("Cafe")));
    ASSERT_TRUE(client_->waitUntil([&] {
        return position([](const Signal& s) {
                   return s.member == "PropertiesChanged" && s.interface == supplicantInterface.interface &&
                          s.arguments.at(0).value("State", "") == "completed";
               }) < client_->signals().size();
    }));
    std::vector<nlohmann::json> standard;
    std::vector<nlohmann::json> own;
    for (const Signal& signal : client_->signals()) {
        if (signal.member == "PropertiesChanged" && signal.path == supplicantInterface.path) {
            const bool isOwn = signal.interface == supplicantInterface.interface;
            (isOwn ? own : standard).push_back(signal.arguments.at(isOwn ? 0 : 1));
            EXPECT_GE(standard.size(), own.size());
        }
    }
    EXPECT_EQ(standard, own);
}

TEST_F(SignalOrder, AnswersACallBeforeItTellsWhatTheCallHasChanged) {
    start({accessPoint("Cafe", Security::open)});
    const std::string network = addNetwork(openNetwork("Cafe"));
    const Message call = client_->newCall(supplicantInterface, "SelectNetwork");
    checked(sd_bus_message_append(call.get(), "o", network.c_str()), "append");
    sd_bus_slot* slot = nullptr;
    checked(sd_bus_call_async(
                client_->bus(), &slot, call.get(),
                [](sd_bus_message*, void* signals, sd_bus_error*) {
                    static_cast<std::vector<Signal>*>(signals)->push_back(
                        {.member = "the reply", .arguments = {}});
                    return 0;
                },
                &client_->signals(), 0),
            "call");
    const Slot owned(slot);
    const auto enabled = [](const Signal& s) {
        return s.path != supplicantInterface.path && changes(s, "Enabled");
    };
    ASSERT_TRUE(client_->waitUntil([&] { return position(enabled) < client_->signals().size(); }));
    const auto selected = position([](const Signal& s) { return s.member == "NetworkSelected"; });
    const auto reply = position([](const Signal& s) { return s.member == "the reply"; });
    EXPECT_LT(selected, reply);
    EXPECT_LT(reply, position(enabled));
}

}  // namespace
}  // namespace kaz::sim::test
