#include "inspection/machine.h"

#include "support/files/files.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace kaz::inspection {
namespace {

class Machine : public ::testing::Test {
  protected:
    void write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories((root / name).parent_path());
        test::writeFile(root / name, text);
    }

    TemporaryFolder root;
    Facts facts;
};

TEST_F(Machine, LinksHaveTheirSwitchesAndNetworkdsFile) {
    write("sys/class/net/wlan0/ifindex", "3\n");
    write("sys/class/net/wlan0/flags", "0x1003\n");
    write("sys/class/net/wlan0/phy80211/name", "phy1\n");
    write("sys/class/net/wlan0/phy80211/rfkill4/soft", "1\n");
    write("sys/class/net/wlan0/phy80211/rfkill4/hard", "0\n");
    write("sys/class/net/eth0/flags", "0x1002\n");
    write("sys/class/ieee80211/phy1/index", "1\n");
    write(
        "run/systemd/netif/links/3",
        "ADMIN_STATE=configured\nNETWORK_FILE=/etc/systemd/network/wlan0.network\nREQUIRED_FOR_ONLINE=no\n");
    write("etc/systemd/network/wlan0.network",
          "[Match]\nName=wlan0\n[Network]\n# DHCP=no\nDHCP = ipv4\nLinkLocalAddressing=ipv6\n");
    write("etc/systemd/network/wlan0.network.d/local.conf", "[Network]\nLinkLocalAddressing=no\n");
    readLinks(facts, root.path());
    ASSERT_EQ(facts.links.size(), 2U);
    EXPECT_FALSE(facts.links[0].isWireless);
    EXPECT_FALSE(facts.links[0].isUp);
    const Link& wlan0 = facts.links[1];
    EXPECT_TRUE(wlan0.isWireless);
    EXPECT_TRUE(wlan0.isUp);
    EXPECT_EQ(wlan0.phy, "phy1");
    ASSERT_EQ(wlan0.switches.size(), 1U);
    EXPECT_EQ(wlan0.switches[0].path, "/sys/class/rfkill/rfkill4");
    EXPECT_TRUE(wlan0.switches[0].soft);
    EXPECT_FALSE(wlan0.switches[0].hard);
    ASSERT_TRUE(wlan0.managed.isKnown());
    EXPECT_FALSE(wlan0.managed->requiredForOnline);
    EXPECT_EQ(wlan0.managed->settings.at("Network/DHCP"), "ipv4");
    EXPECT_EQ(wlan0.managed->settings.at("Network/LinkLocalAddressing"), "no")
        << "a drop-in comes after the file";
    EXPECT_EQ(facts.phys, std::vector<std::string>{"phy1"});
}

TEST_F(Machine, ProcessesAreSupplicantsAndRivals) {
    write("proc/12/comm", "wpa_supplicant\n");
    write("proc/12/cmdline", std::string("/sbin/wpa_supplicant\0-u\0", 24));
    write("proc/12/stat", "12 (wpa_supplicant) T 1 12 12 0");
    write("proc/13/comm", "iwd\n");
    write("proc/13/stat", "13 (iwd) S 1 13 13 0");
    write("proc/14/comm", "bash\n");
    write("proc/self/comm", "iwd\n");
    readProcesses(facts, root.path());
    ASSERT_EQ(facts.supplicants.size(), 1U);
    EXPECT_EQ(facts.supplicants[0].pid, 12);
    EXPECT_EQ(facts.supplicants[0].command, (std::vector<std::string>{"/sbin/wpa_supplicant", "-u"}));
    EXPECT_TRUE(facts.supplicants[0].isStopped);
    ASSERT_EQ(facts.rivals.size(), 1U);
    EXPECT_FALSE(facts.rivals[0].isStopped);
}

TEST_F(Machine, TheChoiceIsTheLastLine) {
    write("kaz.conf", "wifi=on\nother=1\nwifi=off\n");
    const ChoiceFile file = readChoice(root.path(), "/kaz.conf");
    ASSERT_TRUE(file.choice.isKnown());
    EXPECT_EQ(*file.choice, "off");
    EXPECT_EQ(file.writeError, 0);
    EXPECT_TRUE(readChoice(root.path(), "/a/b/kaz.conf").choice.isAbsent());
    std::filesystem::create_directory(root / "folder");
    EXPECT_EQ(readChoice(root.path(), "/folder").writeError, EISDIR);
}

}  // namespace
}  // namespace kaz::inspection
