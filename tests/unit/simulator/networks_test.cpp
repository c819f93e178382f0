#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;

class Networks : public DeviceTest {
  protected:
    json list() { return get("Networks"); }

    std::string refusalOf(const Settings& settings) {
        try {
            addNetwork(settings);
            return {};
        } catch (const CallFailed& failed) {
            return failed.name() + ": " + failed.what();
        }
    }
};

TEST_F(Networks, AreAddedDisabledAndListedInOrder) {
    start();
    const std::string home = addNetwork(pskNetwork("Home", "correct horse"));
    const std::string cafe = addNetwork(openNetwork("Cafe"));
    EXPECT_EQ(list(), json({home, cafe}));
    EXPECT_EQ(client_->get(networkAt(home), "Enabled"), false);
    const auto shown = client_->get(networkAt(home), "Properties");
    EXPECT_TRUE(includes(
        shown, {{"ssid", "\"Home\""}, {"key_mgmt", "WPA-PSK"}, {"ieee80211w", "1"}, {"priority", "0"}}))
        << shown;
    EXPECT_FALSE(shown.contains("psk"));
}

TEST_F(Networks, ShowTheirSsidAsTheSupplicantDoes) {
    start();
    const std::pair<Setting, const char*> rows[] = {
        {"Home", "\"Home\""},        {"a\"b\\c", "\"a\"b\\c\""},
        {"l\xc3\xa9", "6cc3a9"},     {ByteSetting{std::string("A\0B", 3)}, "410042"},
        {ByteSetting{"\xff"}, "ff"},
    };
    for (const auto& [ssid, text] : rows) {
        const std::string path = addNetwork({{"ssid", ssid}, {"key_mgmt", "NONE"}});
        EXPECT_EQ(client_->get(networkAt(path), "Properties").at("ssid"), text);
    }
}

TEST_F(Networks, AreRefusedWithInvalidSettings) {
    start();
    const Settings rows[] = {
        pskNetwork("Home", "short"),
        pskNetwork("Home", std::string(64, '0')),
        {{"ssid", "Home"}, {"bogus", "x"}},
        {{"ssid", UnusableSetting{}}},
    };
    for (const Settings& settings : rows) {
        EXPECT_EQ(refusalOf(settings), "org.freedesktop.DBus.Error.InvalidArgs: invalid message format");
    }
    EXPECT_EQ(list().size(), 0U);
}

TEST_F(Networks, GetTheIdAfterTheGreatestInUse) {
    start();
    addNetwork(openNetwork("a"));
    const std::string last = addNetwork(openNetwork("b"));
    call("RemoveNetwork", "o", last.c_str());
    EXPECT_EQ(addNetwork(openNetwork("c")), last);
}

TEST_F(Networks, AreSignalledWhenTheyAreAddedAndRemoved) {
    start();
    const std::string path = addNetwork(openNetwork("a"));
    EXPECT_TRUE(client_->waitForSignalOf("NetworkAdded", path));
    call("RemoveNetwork", "o", path.c_str());
    EXPECT_TRUE(client_->waitForSignalOf("NetworkRemoved", path));
    addNetwork(openNetwork("a"));
    addNetwork(openNetwork("b"));
    call("RemoveAllNetworks");
    EXPECT_EQ(list().size(), 0U);
    EXPECT_THROW(client_->get(networkAt(path), "Properties"), CallFailed);
}

TEST_F(Networks, ThatDoNotExistCannotBeSelectedOrRemoved) {
    start();
    const std::string unknown = supplicantInterface.path + "/Networks/9";
    for (const char* const member : {"SelectNetwork", "RemoveNetwork"}) {
        EXPECT_EQ(errorOf(supplicantInterface, member, "o", unknown.c_str()),
                  "fi.w1.wpa_supplicant1.NetworkUnknown");
        EXPECT_EQ(errorOf(supplicantInterface, member, "o", "/elsewhere"),
                  "fi.w1.wpa_supplicant1.InvalidArgs");
    }
}

TEST_F(Networks, KeepTheirOtherSettingsWhenOneIsSet) {
    start();
    const std::string path = addNetwork(pskNetwork("Home", "correct horse"));
    client_->set(networkAt(path), "Properties", "a{sv}", 1, "priority", "i", 2);
    const json shown = client_->get(networkAt(path), "Properties");
    EXPECT_TRUE(includes(shown, {{"priority", "2"}, {"ssid", "\"Home\""}})) << shown;
    EXPECT_EQ(errorOf(networkAt(path).properties(), "Set", "ssv", "fi.w1.wpa_supplicant1.Network",
                      "Properties", "a{sv}", 1, "bogus", "i", 2),
              "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(Networks, AreAllDisabledButTheSelectedOne) {
    start();
    const std::string first = addNetwork(openNetwork("a"));
    const std::string second = addNetwork(openNetwork("b"));
    select(first);
    select(second);
    EXPECT_EQ(client_->get(networkAt(first), "Enabled"), false);
    EXPECT_EQ(client_->get(networkAt(second), "Enabled"), true);
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [&](const Signal& s) {
        return s.path == first && s.changes() == json({{"Enabled", false}});
    }));
}

TEST_F(Networks, AreSelectedOnceOnly) {
    start();
    const std::string first = addNetwork(openNetwork("a"));
    const std::string second = addNetwork(openNetwork("b"));
    select(first);
    select(first);
    select(second);
    std::vector<std::string> selected;
    ASSERT_TRUE(client_->waitUntil([&] {
        selected.clear();
        for (const Signal& signal : client_->signals()) {
            if (signal.member == "NetworkSelected") {
                selected.push_back(signal.arguments.at(0));
            }
        }
        return !selected.empty() && selected.back() == second;
    }));
    EXPECT_THAT(selected, ElementsAre(first, second));
}

}  // namespace
}  // namespace kaz::sim::test
