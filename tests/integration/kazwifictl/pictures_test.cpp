// Compares what the commands show on a terminal with the pictures in the documents. KAZ_UPDATE_GOLDEN=1 draws them anew, at
// the speed of a real device; look at them before you commit them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "integration/kazwifictl/screen_picture.h"
#include "support/files/files.h"

namespace kaz::test {
namespace {

namespace fs = std::filesystem;

std::string withoutTimes(const std::string& text) {
    static const std::regex time(R"(\d+\.\d s\b)");
    return std::regex_replace(text, time, "N.N s");
}

class Pictures : public CommandFixture {
  protected:
    Pictures() {
        // Few fonts have wide letters that are as wide as two others.
        neighbourhood.accessPoints.at(2).ssid = "Björk & Søn";
        if (updates()) {
            timeScale = 1;
        }
    }

    static bool updates() { return ::getenv("KAZ_UPDATE_GOLDEN") != nullptr; }

    std::string screen(const std::vector<std::string>& arguments, const std::string& typed = {}) {
        const auto program = inTerminal(arguments);
        if (!typed.empty()) {
            waitFor(*program, "Password for");
            program->send(typed);
        }
        program->wait();
        return screenOf(program->out());
    }

    static void expectPicture(const std::string& name, const std::string& command, const std::string& text) {
        for (const auto& [background, word] :
             {std::pair(Background::light, "light"), std::pair(Background::dark, "dark")}) {
            const fs::path path =
                fs::path(KAZWIFICTL_PICTURES) / ("kazwifictl-" + name + "-" + word + ".svg");
            const std::string picture = pictureOf(command, text, background);
            if (updates()) {
                writeFile(path, picture);
            }
            EXPECT_EQ(withoutTimes(picture), withoutTimes(readFile(path))) << "in " << path;
        }
    }

    void writeToRoot(const fs::path& name, const std::string& text) {
        const fs::path path = file("root") / name.relative_path();
        fs::create_directories(path.parent_path());
        writeFile(path, text);
    }

    // What the doctor finds on a healthy device.
    void makeHealthy() {
        writeToRoot("sys/class/net/wlan0/ifindex", "3\n");
        writeToRoot("sys/class/net/wlan0/flags", "0x1003\n");
        writeToRoot("sys/class/net/wlan0/phy80211/name", "phy0\n");
        writeToRoot("sys/class/net/wlan0/phy80211/rfkill0/soft", "0\n");
        writeToRoot("sys/class/net/wlan0/phy80211/rfkill0/hard", "0\n");
        writeToRoot("sys/class/ieee80211/phy0/index", "0\n");
        writeToRoot("lib/firmware/regulatory.db", "");
        writeToRoot("run/systemd/netif/links/3",
                    "ADMIN_STATE=configured\nONLINE_STATE=online\n"
                    "NETWORK_FILE=/etc/systemd/network/wlan0.network\n");
        writeToRoot("etc/systemd/network/wlan0.network",
                    "[Match]\nName=wlan0\n[Network]\nDHCP=ipv4\nLinkLocalAddressing=no\n");
        const fs::path configuration = file("supplicant.conf");
        writeToRoot(configuration, "ctrl_interface=/run/wpa_supplicant\nupdate_config=1\ncountry=FI\n");
        fs::permissions(file("root") / configuration.relative_path(), fs::perms(0600));
    }
};

TEST_F(Pictures, ShowTheListTheStatusAndAnAttempt) {
    startAndScan();
    std::string connect;
    // The supplicant scans again if a busy machine lets its results become old. A first line tells that.
    for (int tries = 0; tries < 20 && (connect.empty() || has(connect, "searched")); ++tries) {
        if (!connect.empty()) {
            runs(0, {"forget", "Home"});
            runs(0, {"scan"});
        }
        connect = screen({"connect", "Home"}, "correct horse\n");
    }
    expectPicture("connect", "kazwifictl connect Home", connect);
    expectPicture("list", "kazwifictl list", screen({"list"}));
    expectPicture("status", "kazwifictl status", screen({"status"}));
}

TEST_F(Pictures, ShowTheDoctor) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "the doctor may not look at everything as another user";
    }
    makeHealthy();
    start();
    writeToRoot("sys/class/net/wlan0/phy80211/rfkill0/soft", "1\n");
    fs::remove(file("root/lib/firmware/regulatory.db"));
    expectPicture("doctor", "kazwifictl doctor", screen({"doctor"}));
}

}  // namespace
}  // namespace kaz::test
