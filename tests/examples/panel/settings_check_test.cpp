#include <settings_check.h>
#include <wifi/manager.h>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace kaz::test {
namespace {

using wifi::SecurityMode;

// Without a bus to act on, connect() is a check and nothing else.
TEST(PanelSettingsCheck, SaysWhatTheLibrarySays) {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    ::setenv("KAZ_CONFIG_FILE", "/nonexistent/kaz.conf", 1);
    wifi::Manager library;
    for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7}) {
        for (const std::size_t ssidLength : {0U, 1U, 32U, 33U}) {
            for (const std::size_t passwordLength :
                 {0U, 1U, 4U, 5U, 6U, 7U, 8U, 12U, 13U, 14U, 63U, 64U, 1024U, 1025U}) {
                for (const char* method : {"", "PAP", "PEAP", "unheard of"}) {
                    wifi::ConnectionSettings settings;
                    settings.ssid = std::string(ssidLength, 's');
                    settings.securityMode = static_cast<SecurityMode>(mode);
                    settings.password = std::string(passwordLength, 'p');
                    settings.eapMethod = settings.phase2Method = method;
                    EXPECT_EQ(checkSettings(settings, library.eapMethods(), library.phase2Methods()),
                              library.connect(settings))
                        << "mode " << mode << ", SSID of " << ssidLength << ", password of " << passwordLength
                        << ", methods '" << method << "'";
                    settings.eapMethod.clear();
                    EXPECT_EQ(checkSettings(settings, library.eapMethods(), library.phase2Methods()),
                              library.connect(settings))
                        << "mode " << mode << ", inner method '" << method << "'";
                }
            }
        }
    }
}

}  // namespace
}  // namespace kaz::test
