// Scans, access points, signal strength and EAP methods.
#include "support/printed_values/printed_reports.h"
#include "unit/communicator/communicator_fixture.h"

namespace kaz::wifi {
namespace {

const Answer broken = errorReply("fi.w1.wpa_supplicant1.UnknownError", "x");

class Bss : public CommunicatorTest {
  protected:
    Bss() { startAttached(); }

    std::string read(const std::string& path) {
        const auto bss = onLoop([&] { return communicator->radio().bssSync(path); });
        return bss ? bssText(*bss) : "nothing";
    }

    std::optional<int> poll(Answer answer) {
        onInterface("SignalPoll", std::move(answer));
        forget();
        return onLoop([&] { return communicator->signalPollSync(); });
    }

    std::optional<int> rateAfter(Answer answer) {
        poll(std::move(answer));
        return onLoop([&] { return communicator->polledRate(); });
    }

    std::set<std::string> eapMethods(Answer answer) {
        supplicant.onGet(rootPath, rootInterface, "EapMethods", std::move(answer));
        forget();
        return onLoop([&] { return communicator->eapMethodsSync(); });
    }
};

TEST_F(Bss, ScanIsPassive) {
    onInterface("Scan", reply(""));
    EXPECT_TRUE(onLoop([&] { return communicator->scanSync(); }));
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("Scan", R"({"Type": <"passive">})")));
    EXPECT_THAT(takeLog(), IsEmpty());
    onInterface("Scan", broken);
    EXPECT_FALSE(onLoop([&] { return communicator->scanSync(); }));
}

TEST_F(Bss, BssIsReadWithOneGetAll) {
    onBss(reply("a{sv}", 6, "BSSID", "ay", 6, 1, 2, 3, 4, 5, 6, "SSID", "ay", 4, 'H', 'o', 'm', 'e', "Signal",
                "n", -61, "Privacy", "b", 1, "RSN", "a{sv}", 2, "KeyMgmt", "as", 2, "wpa-psk", "sae", "Group",
                "s", "ccmp", "Age", "u", 3U));
    EXPECT_EQ(read(bssPath), R"("Home" -61 dBm rsnPsk)");
    EXPECT_THAT(takeCalls(), ElementsAre(getBssProperties));
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(Bss, BssWithoutPropertiesIsHiddenOpenAndOfSignalZero) {
    onBss(reply("a{sv}", 0));
    EXPECT_EQ(read(bssPath), R"("" 0 dBm none)");
}

TEST_F(Bss, HiddenBssHasAnEmptySsid) {
    onBss(reply("a{sv}", 1, "SSID", "ay", 3, 0, 0, 0));
    EXPECT_EQ(read(bssPath), R"("" 0 dBm none)");
    onBss(reply("a{sv}", 1, "SSID", "ay", 1, ' '));
    EXPECT_EQ(read(bssPath), R"("" 0 dBm none)");
    onBss(reply("a{sv}", 1, "SSID", "ay", 2, ' ', ' '));
    EXPECT_EQ(read(bssPath), R"("  " 0 dBm none)");
}

TEST_F(Bss, BssSignalHasItsWholeRange) {
    for (const int signal : {-32768, -100, 0, 32767}) {
        onBss(reply("a{sv}", 1, "Signal", "n", signal));
        EXPECT_EQ(read(bssPath), "\"\" " + std::to_string(signal) + " dBm none");
    }
}

TEST_F(Bss, BssThatIsGoneReturnsNothing) {
    EXPECT_EQ(read(bssPath), "nothing");
    EXPECT_THAT(takeCalls(), ElementsAre(getBssProperties));
}

TEST_F(Bss, UndecodableBssReturnsNothingAndLogsOneWarning) {
    onBss(reply("a{sv}", 2, "Privacy", "b", 1, "Signal", "i", -61));
    EXPECT_EQ(read(bssPath), "nothing");
    EXPECT_THAT(takeLog(), ElementsAre(warning(decodingFailed + noSuchValue)));
}

TEST_F(Bss, BssListKeepsTheOrderOfThePathsAndEachSsid) {
    supplicant.onGetAll("/b/1", bssInterface, reply("a{sv}", 1, "Signal", "n", -1));
    supplicant.onGetAll("/b/2", bssInterface, reply("a{sv}", 1, "Signal", "n", -2));
    supplicant.onGetAll("/b/3", bssInterface, reply("a{sv}", 1, "Signal", "s", "x"));
    const auto list = onLoop([&] {
        return communicator->radio().bssListSync({"/b/2", "/b/gone", "/b/3", "/b/1", "/b/2"});
    });
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].signal, -2);
    EXPECT_EQ(list[1].signal, -1);
    EXPECT_EQ(list[2].signal, -2);
    EXPECT_THAT(onLoop([&] { return communicator->radio().bssListSync({}); }), IsEmpty());
}

TEST_F(Bss, BssListEndsAfterOneTimeout) {
    limitCalls(std::chrono::seconds(1));
    startAttached();
    supplicant.onGetAll("/b/1", bssInterface, reply("a{sv}", 1, "Signal", "n", -1));
    for (const char* path : {"/b/2", "/b/3", "/b/4"}) {
        supplicant.onGetAll(path, bssInterface, noReply());
    }
    const auto list = onLoop([&] {
        return communicator->radio().bssListSync({"/b/1", "/b/2", "/b/3", "/b/4"});
    });
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].signal, -1);
    EXPECT_THAT(takeCalls(), ElementsAre(getAllText("/b/1", bssInterface), getAllText("/b/2", bssInterface)));
    EXPECT_EQ(takeLog().back(), warning("wpa_supplicant is too slow, leaving out some of 4 BSSs"));
}

TEST_F(Bss, ASupplicantIsSilentFromATimeoutToItsNextReplyOrSignal) {
    limitCalls(std::chrono::milliseconds(100));
    startAttached();
    const auto isSilent = [this] { return onLoop([this] { return communicator->isSupplicantSilent(); }); };
    const auto scan = [this] { return onLoop([this] { return communicator->scanSync(); }); };
    onInterface("Scan", noReply());
    EXPECT_FALSE(scan());
    EXPECT_TRUE(isSilent());
    onInterface("Scan", errorReply("fi.w1.wpa_supplicant1.Interface.ScanError", "busy"));
    EXPECT_FALSE(scan());
    EXPECT_FALSE(isSilent());
    onInterface("Scan", noReply());
    EXPECT_FALSE(scan());
    EXPECT_TRUE(isSilent());
    emitFromInterface("ScanDone", "b", 1);
    settle();
    EXPECT_FALSE(isSilent());
}

TEST_F(Bss, SignalPollReturnsTheRssi) {
    EXPECT_EQ(poll(reply("a{sv}", 3, "linkspeed", "i", 65, "rssi", "i", -58, "noise", "i", -95)), -58);
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("SignalPoll")));
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_EQ(poll(reply("v", "a{sv}", 1, "rssi", "i", 0)), 0);
}

TEST_F(Bss, SignalPollWithoutRssiReturnsNothingAndLogsAWarning) {
    EXPECT_EQ(poll(reply("a{sv}", 1, "linkspeed", "i", 65)), std::nullopt);
    EXPECT_THAT(takeLog(),
                ElementsAre(warning("SignalPoll succeeded, but didn't return signal strength (rssi)")));
}

TEST_F(Bss, FailedSignalPollReturnsNothing) {
    EXPECT_EQ(poll(broken), std::nullopt);
    EXPECT_FALSE(log.contains("SignalPoll succeeded"));
    EXPECT_FALSE(log.contains("Error while decoding"));
}

TEST_F(Bss, UndecodableSignalPollReturnsNothing) {
    EXPECT_EQ(poll(reply("a{sv}", 1, "rssi", "s", "-58")), std::nullopt);
    EXPECT_THAT(takeLog(), ElementsAre(warning(decodingFailed + noSuchValue)));
}

TEST_F(Bss, PolledRateIsThatOfTheLastPoll) {
    EXPECT_EQ(rateAfter(reply("a{sv}", 2, "linkspeed", "i", 65, "rssi", "i", -58)), 65);
    EXPECT_EQ(rateAfter(broken), std::nullopt);
    EXPECT_EQ(rateAfter(reply("a{sv}", 1, "linkspeed", "i", 54)), 54);
    EXPECT_EQ(rateAfter(reply("a{sv}", 1, "rssi", "i", -58)), std::nullopt);
    // A rate of another type is left out, and the signal is still read.
    EXPECT_EQ(rateAfter(reply("a{sv}", 2, "linkspeed", "s", "65", "rssi", "i", -58)), std::nullopt);
}

TEST_F(Bss, EapMethodsAreSortedAndUnique) {
    EXPECT_THAT(eapMethods(reply("v", "as", 4, "TTLS", "PEAP", "TTLS", "MD5")),
                ElementsAre("MD5", "PEAP", "TTLS"));
    EXPECT_THAT(takeCalls(), ElementsAre(getText(rootPath, rootInterface, "EapMethods")));
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_THAT(eapMethods(reply("v", "as", 0)), IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(Bss, FailedReadOfEapMethodsReturnsNoneAndLogsIt) {
    EXPECT_THAT(eapMethods(broken), IsEmpty());
    EXPECT_EQ(takeLog().back(), warning("Unable to load eapMethods"));
}

TEST_F(Bss, UndecodableEapMethodsReturnNoneAndLogTwoRecords) {
    EXPECT_THAT(eapMethods(reply("v", "s", "PEAP")), IsEmpty());
    EXPECT_THAT(takeLog(),
                ElementsAre(warning("Error while decoding dbus data. Details: Unable to read from variant: "
                                    "No such device or address"),
                            warning("Unable to load eapMethods")));
}

}  // namespace
}  // namespace kaz::wifi
