#include "vm/command.h"
#include "vm/device.h"

#include <fstream>
#include <string>

namespace kaz::vm {
namespace {

class Enabling : public DeviceTest {
  protected:
    static bool unitIs(const std::string& state) {
        return run("systemctl show --property=ActiveState --value wpa_supplicant") == state + "\n";
    }

    static std::string storedChoice() {
        std::ifstream file("/home/root/.config/tessaline/kaz.conf");
        std::string line;
        while (std::getline(file, line) && line.rfind("wifi=", 0) != 0) {
        }
        return line;
    }
};

TEST_F(Enabling, SwitchingOffOnAndOffAgainStopsAndStartsTheUnit) {
    for (const bool on : {false, true, false}) {
        SCOPED_TRACE(on ? "on" : "off");
        const int before = device().enabledChanges();
        manager().setEnabled(on);
        EXPECT_EQ(manager().isEnabled(), on);
        EXPECT_EQ(storedChoice(), on ? "wifi=on" : "wifi=off");
        ASSERT_TRUE(on ? device().attaches() : device().detaches());
        EXPECT_TRUE(device().eventually([&] { return unitIs(on ? "active" : "inactive"); }));
        // One callback for the choice and one for the supplicant.
        EXPECT_TRUE(device().eventually([&] { return device().enabledChanges() == before + 2; }));
        EXPECT_EQ(manager().eapMethods().count("PEAP"), 1U);  // kept when the supplicant stops
    }
    EXPECT_TRUE(device().eventually([&] { return manager().networks().empty(); }));
}

TEST_F(Enabling, ASupplicantSwitchedOnByAnotherIsFollowed) {
    run("systemctl stop wpa_supplicant");
    ASSERT_TRUE(device().detaches());
    EXPECT_TRUE(manager().isEnabled());
    run("systemctl start wpa_supplicant");
    ASSERT_TRUE(device().attaches());
    EXPECT_TRUE(manager().isEnabled());
}

TEST_F(Enabling, SwitchingOnRetriesASupplicantThatFailed) {
    run("systemctl kill --signal=KILL wpa_supplicant");
    ASSERT_TRUE(device().detaches());
    ASSERT_TRUE(device().eventually([&] { return unitIs("failed"); }));
    manager().setEnabled(true);
    EXPECT_TRUE(device().attaches());
}

}  // namespace
}  // namespace kaz::vm
