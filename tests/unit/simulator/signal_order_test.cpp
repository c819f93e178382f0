#include "unit/simulator/device_fixture.h"

#include <algorithm>

namespace kaz::sim::test {
namespace {

class SignalOrder : public DeviceTest {
  protected:
    // Position of the first signal for which the condition holds; the number of signals when there is none.
    std::size_t position(const std::function<bool(const Signal&)>& condition) {
        const auto& all = client_->signals();
        return static_cast<std::size_t>(std::find_if(all.begin(), all.end(), condition) - all.begin());
    }

    // Position of the first signal of this member, and of the first one with a change of this property.
    std::size_t member(const std::string& name) {
        return position([&](const Signal& s) { return s.member == name; });
    }
    std::size_t change(const char* property) {
        return position([&](const Signal& s) { return s.changes().contains(property); });
    }
};

TEST_F(SignalOrder, PutsBssAddedAndScanDoneBeforeTheListOfBsss) {
    startInRangeOf({cafe});
    requestScan();
    ASSERT_TRUE(client_->waitUntil([&] { return !client_->valuesOf("BSSs").empty(); }));
    EXPECT_LT(member("BSSAdded"), member("ScanDone"));
    EXPECT_LT(member("ScanDone"), change("BSSs"));
}

TEST_F(SignalOrder, PutsTheReasonBeforeTheDisconnectedState) {
    ASSERT_NO_FATAL_FAILURE(startConnected());
    device_->deauthenticate(7);
    ASSERT_TRUE(client_->waitUntil([&] { return !client_->valuesOf("State").empty(); }));
    EXPECT_LT(change("DisconnectReason"), change("State"));
}

TEST_F(SignalOrder, SetsTheCurrentNetworkWhenAuthenticatingAndTheCurrentBssWhenAssociated) {
    startInRangeOf({home});
    select(addNetwork(pskNetwork("Home", "correct horse")));
    ASSERT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return includes(s.changes(), {{"State", "authenticating"}}) && s.changes().contains("CurrentNetwork");
    }));
    ASSERT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return includes(s.changes(), {{"State", "associated"}}) && s.changes().contains("CurrentBSS");
    }));
}

TEST_F(SignalOrder, SendsTheInterfacesOwnSignalAfterTheStandardOne) {
    startInRangeOf({cafe});
    select(addNetwork(openNetwork("Cafe")));
    ASSERT_TRUE(client_->waitUntil([&] {
        return position([](const Signal& s) {
                   return s.member == "PropertiesChanged" && s.interface == supplicantInterface.interface &&
                          s.arguments.at(0).value("State", "") == "completed";
               }) < client_->signals().size();
    }));
    std::vector<json> standard;
    std::vector<json> own;
    for (const Signal& signal : client_->signals()) {
        if (signal.member == "PropertiesChanged" && signal.path == supplicantInterface.path) {
            const bool isOwn = signal.interface == supplicantInterface.interface;
            (isOwn ? own : standard).push_back(signal.arguments.at(isOwn ? 0 : 1));
            EXPECT_GE(standard.size(), own.size());
        }
    }
    EXPECT_EQ(standard, own);
}

TEST_F(SignalOrder, RepliesToACallBeforeItSignalsTheChanges) {
    startInRangeOf({cafe});
    const std::string network = addNetwork(openNetwork("Cafe"));
    const Message call = client_->newCall(supplicantInterface, "SelectNetwork", "o", network.c_str());
    Slot slot;
    checked(sd_bus_call_async(
                client_->bus(), dbus::out(slot), call.get(),
                [](sd_bus_message*, void* signals, sd_bus_error*) {
                    static_cast<std::vector<Signal>*>(signals)->push_back({.member = "the reply"});
                    return 0;
                },
                &client_->signals(), 0),
            "call");
    ASSERT_TRUE(client_->waitUntil([&] { return change("Enabled") < client_->signals().size(); }));
    EXPECT_LT(member("NetworkSelected"), member("the reply"));
    EXPECT_LT(member("the reply"), change("Enabled"));
}

}  // namespace
}  // namespace kaz::sim::test
