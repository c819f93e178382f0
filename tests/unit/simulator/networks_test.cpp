#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;

class Networks : public DeviceTest {
  protected:
    nlohmann::json list() { return client_->get(supplicantInterface, "Networks"); }

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
    start(std::vector<AccessPoint>{});
    const std::string home = addNetwork(pskNetwork("Home", "correct horse"));
    const std::string cafe = addNetwork(openNetwork("Cafe"));
    EXPECT_EQ(list(), nlohmann::json({home, cafe}));
    EXPECT_EQ(client_->get(networkAt(home), "Enabled"), false);
    const auto shown = client_->get(networkAt(home), "Properties");
    EXPECT_EQ(shown.at("ssid"), "\"Home\"");
    EXPECT_EQ(shown.at("key_mgmt"), "WPA-PSK");
    EXPECT_EQ(shown.at("ieee80211w"), "1");
    EXPECT_EQ(shown.at("priority"), "0");
    EXPECT_FALSE(shown.contains("psk"));
}

TEST_F(Networks, ShowTheirSsidAsTheSupplicantDoes) {
    start(std::vector<AccessPoint>{});
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
    start(std::vector<AccessPoint>{});
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
    start(std::vector<AccessPoint>{});
    addNetwork(openNetwork("a"));
    const std::string last = addNetwork(openNetwork("b"));
    client_->call(supplicantInterface, "RemoveNetwork", "o", last.c_str());
    EXPECT_EQ(addNetwork(openNetwork("c")), last);
}

TEST_F(Networks, AreToldOfWhenTheyComeAndGo) {
    start(std::vector<AccessPoint>{});
    const std::string path = addNetwork(openNetwork("a"));
    EXPECT_TRUE(
        client_->waitForSignal("NetworkAdded", [&](const Signal& s) { return s.arguments.at(0) == path; }));
    client_->call(supplicantInterface, "RemoveNetwork", "o", path.c_str());
    EXPECT_TRUE(
        client_->waitForSignal("NetworkRemoved", [&](const Signal& s) { return s.arguments.at(0) == path; }));
    addNetwork(openNetwork("a"));
    addNetwork(openNetwork("b"));
    client_->call(supplicantInterface, "RemoveAllNetworks");
    EXPECT_EQ(list().size(), 0U);
    EXPECT_THROW(client_->get(networkAt(path), "Properties"), CallFailed);
}

TEST_F(Networks, CannotBeSelectedOrRemovedWhenThereAreNone) {
    start(std::vector<AccessPoint>{});
    const std::string unknown = supplicantInterface.path + "/Networks/9";
    for (const char* const member : {"SelectNetwork", "RemoveNetwork"}) {
        EXPECT_EQ(errorOf(supplicantInterface, member, "o", unknown.c_str()),
                  "fi.w1.wpa_supplicant1.NetworkUnknown");
        EXPECT_EQ(errorOf(supplicantInterface, member, "o", "/elsewhere"),
                  "fi.w1.wpa_supplicant1.InvalidArgs");
    }
}

TEST_F(Networks, KeepTheirOtherSettingsWhenOneIsSet) {
    start(std::vector<AccessPoint>{});
    const std::string path = addNetwork(pskNetwork("Home", "correct horse"));
    const Target properties{supplicantInterface.service, path, "org.freedesktop.DBus.Properties"};
    client_->call(properties, "Set", "ssv", "fi.w1.wpa_supplicant1.Network", "Properties", "a{sv}", 1,
                  "priority", "i", 2);
    const auto shown = client_->get(networkAt(path), "Properties");
    EXPECT_EQ(shown.at("priority"), "2");
    EXPECT_EQ(shown.at("ssid"), "\"Home\"");
    EXPECT_EQ(errorOf(properties, "Set", "ssv", "fi.w1.wpa_supplicant1.Network", "Properties", "a{sv}", 1,
                      "bogus", "i", 2),
              "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(Networks, AreAllDisabledButTheSelectedOne) {
    start(std::vector<AccessPoint>{});
    const std::string first = addNetwork(openNetwork("a"));
    const std::string second = addNetwork(openNetwork("b"));
    select(first);
    select(second);
    EXPECT_EQ(client_->get(networkAt(first), "Enabled"), false);
    EXPECT_EQ(client_->get(networkAt(second), "Enabled"), true);
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [&](const Signal& s) {
        return s.path == first && s.interface == "org.freedesktop.DBus.Properties" &&
               s.arguments.at(1) == nlohmann::json({{"Enabled", false}});
    }));
}

TEST_F(Networks, AreSelectedOnceOnly) {
    start(std::vector<AccessPoint>{});
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
