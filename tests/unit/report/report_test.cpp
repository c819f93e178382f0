#include "report/report.h"

#include "base/hex.h"
#include "inspection/supplicant_file.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace kaz::report {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(ReportText, HasNoSecretNameOrAddress) {
    const std::string ssid = "caf\xc3\xa9 \"42\"";
    inspection::SupplicantFile file;
    file.settings = inspection::settingsIn("network={\nssid=" + toHex(ssid) +
                                           "\npsk=\"pass-secret\"\nidentity=\"alice\"\n}\n");
    inspection::Facts facts;
    facts.supplicant = inspection::Supplicant{{{"/0", "wlan0", "completed", "", file.settings->networks}}};
    facts.supplicantFile = file;
    const std::string time = "2026-11-23 05:00:00 ";
    const std::string text = reportOf(
        facts, {{doctor::Link::networks, doctor::Verdict::doubtful, "disabled", "", {ssid}}}, "1.2.3",
        {time + "wpa_supplicant: SSID='caf\\xc3\\xa9 \\\"42\\\"' freq=2412",
         time + "wpa_supplicant: joined " + ssid, time + "networkd: wlan0: 10.77.4.10 of 02:00:00:00:0a:00"});
    for (const std::string& secret :
         {ssid, toHex(ssid), std::string("caf"), std::string("42\\"), std::string("pass-secret"),
          std::string("alice"), std::string("10.77"), std::string("02:00:00")}) {
        EXPECT_THAT(text, Not(HasSubstr(secret)));
    }
    EXPECT_THAT(text, HasSubstr("kazwifictl 1.2.3\n"));
    EXPECT_THAT(text, HasSubstr("doubtful      networks       disabled <ssid-1>\n"));
    EXPECT_THAT(text, HasSubstr("network <ssid-1>, key\n"));
    EXPECT_THAT(text, HasSubstr(time + "wpa_supplicant: SSID='<ssid-1>' freq=2412\n"));
    EXPECT_THAT(text, HasSubstr(time + "wpa_supplicant: joined <ssid-1>\n"));
    EXPECT_THAT(text, HasSubstr(time + "networkd: wlan0: <ip-1> of <mac-1>\n"));
}

}  // namespace
}  // namespace kaz::report
