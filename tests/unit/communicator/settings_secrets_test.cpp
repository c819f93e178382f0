// Wiping the passphrase in a network's settings. A separate program, because it replaces operator new and delete.
#include "communicator/network_settings.h"
#include "support/freed_memory_watch/freed_memory_watch.h"

#include <gtest/gtest.h>

#include <string>

namespace kaz::wifi {
namespace {

TEST(SettingsSecrets, SecretsOfEachSecurityModeAreWiped) {
    const std::string passphrase = "correct horse battery staple, and then some";
    for (const SecurityMode mode : {SecurityMode::none, SecurityMode::wep, SecurityMode::wpaPsk,
                                    SecurityMode::rsnPsk, SecurityMode::sae, SecurityMode::enterprise,
                                    SecurityMode::enterpriseVariant, SecurityMode::unsupported}) {
        ConnectionSettings settings;
        settings.securityMode = mode;
        settings.password = passphrase;
        settings.identity = passphrase;
        settings.anonymousIdentity = passphrase;
        const Certificates certificates{"/ca.pem", "example.org", "/own.pem", "/key", passphrase};
        const test::FreedMemoryWatch watch(passphrase);
        EXPECT_FALSE(networkSettings(settings, certificates).empty());
        EXPECT_EQ(watch.leaks(), 0U) << static_cast<int>(mode);
    }
}

}  // namespace
}  // namespace kaz::wifi
