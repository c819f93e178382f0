// A program with the least rights that the library needs: examples/wifi-panel.service.
#include "vm/command.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <gtest/gtest.h>

#include <string>

namespace kaz::vm {
namespace {

class LeastRights : public ::testing::Test {
  protected:
    void SetUp() override { run("/opt/guest/device reset"); }
    void TearDown() override {
        run("rm -f /run/systemd/system/wifi-panel.service && systemctl daemon-reload");
    }

    // Runs one command of kazwifictl under the unit of the example. Returns whether it succeeded.
    static bool asUnit(const std::string& command) {
        run("sed -e 's#^ExecStart=.*#ExecStart=/opt/kaz/bin/kazwifictl " + command +
            "#' -e 's/^Restart=.*/Type=oneshot/' /opt/guest/wifi-panel.service"
            " > /run/systemd/system/wifi-panel.service && systemctl daemon-reload");
        return succeeds("systemctl start wifi-panel");
    }
};

TEST_F(LeastRights, LeastRightsAreEnoughForEverything) {
    EXPECT_TRUE(asUnit("scan"));
    EXPECT_TRUE(asUnit("connect \"Kaz Open\" --security open"));
    EXPECT_TRUE(savedNetwork("Kaz Open"));
    EXPECT_TRUE(asUnit("forget \"Kaz Open\""));
    EXPECT_TRUE(savedNetworks().empty());
    EXPECT_TRUE(asUnit("off"));
    EXPECT_FALSE(succeeds("systemctl is-active wpa_supplicant"));
    EXPECT_TRUE(succeeds("grep -qx wifi=off /var/lib/wifi-panel/kaz.conf"));
    EXPECT_TRUE(asUnit("on"));
    EXPECT_TRUE(succeeds("systemctl is-active wpa_supplicant"));
}

TEST_F(LeastRights, LeastRightsAreFew) {
    ASSERT_TRUE(asUnit("status"));
    // From 0 (no exposure) to 10.
    const std::string verdict = run("systemd-analyze security --no-pager wifi-panel | tail -n 1");
    EXPECT_TRUE(succeeds("systemd-analyze security --no-pager --threshold=25 wifi-panel")) << verdict;
    RecordProperty("exposure", verdict);
}

}  // namespace
}  // namespace kaz::vm
