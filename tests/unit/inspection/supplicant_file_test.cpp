#include "inspection/supplicant_file.h"

#include "support/files/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace kaz::inspection {
namespace {

TEST(SupplicantFileText, GivesStructureWithoutKeys) {
    const auto settings = settingsIn(R"(ctrl_interface=/run/wpa_supplicant
update_config=1
country=FI # Finland
network={
	ssid="Home # 1"
	psk="a secret"
	disabled=1
}
network={
	ssid=486f6d65ff
	key_mgmt=SAE
}
network={
	ssid="Work"
	key_mgmt=WPA-EAP
	ca_cert="/ca.pem"
	identity="alice"
	password="another secret"
}
network={
	key_mgmt=NONE
}
)");
    EXPECT_FALSE(settings.badLine);
    EXPECT_EQ(settings.globals,
              (std::map<std::string, std::string>{{"country", "FI"}, {"update_config", "1"}}));
    ASSERT_EQ(settings.networks.size(), 4U);
    EXPECT_EQ(settings.networks[0].ssid, "Home # 1");
    EXPECT_TRUE(settings.networks[0].disabled);
    EXPECT_TRUE(settings.networks[0].hasKey);
    EXPECT_EQ(settings.networks[1].ssid, "Home\xff");
    EXPECT_TRUE(settings.networks[1].usesSae);
    EXPECT_FALSE(settings.networks[1].hasKey);
    EXPECT_TRUE(settings.networks[2].isEnterprise);
    EXPECT_TRUE(settings.networks[2].verifiesServer);
    EXPECT_FALSE(settings.networks[3].ssid);
}

TEST(SupplicantFileText, NamesTheLineThatTheSupplicantRefuses) {
    EXPECT_EQ(settingsIn("update_config=1\nnonsense\n").badLine, 2);
    EXPECT_EQ(settingsIn("}\n").badLine, 1);
    EXPECT_EQ(settingsIn("network={\nssid=\"a\"\n").badLine, 2) << "a block without end";
    EXPECT_EQ(settingsIn("network={\nnonsense\n}\n").badLine, 2);
    EXPECT_FALSE(settingsIn("blob-base64-ca={\nTUlJ\n}\n").badLine);
    EXPECT_FALSE(settingsIn("").badLine);
}

TEST(SupplicantFileOnDisk, HasOwnerAndMode) {
    const TemporaryFolder root;
    test::writeFile(root / "device.conf", "update_config=1\n");
    std::filesystem::permissions(root / "device.conf", std::filesystem::perms(0640));
    const Fact<SupplicantFile> file = readSupplicantFile(root.path(), "/device.conf");
    ASSERT_TRUE(file.isKnown());
    EXPECT_EQ(file->mode, 0640U);
    EXPECT_EQ(file->path, "/device.conf");
    EXPECT_TRUE(file->settings.isKnown());
    EXPECT_TRUE(readSupplicantFile(root.path(), "/missing.conf").isAbsent());
}

}  // namespace
}  // namespace kaz::inspection
