#include "kazwifictl/text/words.h"

#include <gtest/gtest.h>

#include <set>

#include "kazwifictl/text/signal_strength.h"

namespace kaz::ctl {
namespace {

using wifi::SecurityMode;

constexpr std::array modes{SecurityMode::none,       SecurityMode::wep, SecurityMode::wpaPsk,
                           SecurityMode::rsnPsk,     SecurityMode::sae, SecurityMode::enterprise,
                           SecurityMode::unsupported};

TEST(Words, NameEverySecurityDifferently) {
    std::set<std::string> words;
    std::set<std::string_view> names;
    for (const SecurityMode mode : modes) {
        words.insert(securityInWords(mode));
        names.insert(securityName(mode));
    }
    EXPECT_EQ(words.size(), modes.size());
    EXPECT_EQ(names.size(), modes.size());
}

TEST(Words, UnderstandTheNamesTheyGive) {
    for (const SecurityMode mode : modes) {
        if (mode != SecurityMode::unsupported) {
            EXPECT_EQ(securityFromName(securityName(mode)), mode) << securityName(mode);
        }
    }
    EXPECT_EQ(securityFromName("WPA2-PSK"), SecurityMode::rsnPsk);
    EXPECT_EQ(securityFromName("SAE"), SecurityMode::sae);
    EXPECT_EQ(securityFromName("unsupported"), std::nullopt);
    EXPECT_EQ(securityFromName(""), std::nullopt);
}

TEST(Words, SayHowFarTheServerIsVerified) {
    EXPECT_EQ(serverTrust(SecurityMode::rsnPsk, {}), std::nullopt);
    EXPECT_EQ(serverTrust(SecurityMode::enterprise, {}), ServerTrust::notVerified);
    EXPECT_EQ(serverTrust(SecurityMode::enterprise, {"", "", "/own.pem", "/key", ""}),
              ServerTrust::notVerified);
    EXPECT_EQ(serverTrust(SecurityMode::enterprise, {"/ca.pem", "", "", "", ""}), ServerTrust::anyOfCa);
    EXPECT_EQ(serverTrust(SecurityMode::enterprise, {"/ca.pem", "example.org", "", "", ""}),
              ServerTrust::verified);
    EXPECT_EQ(serverRemark(std::nullopt), "");
    EXPECT_EQ(serverRemark(ServerTrust::verified), "");
    EXPECT_NE(serverRemark(ServerTrust::anyOfCa), "");
    EXPECT_NE(serverRemark(ServerTrust::notVerified).find("not verified"), std::string_view::npos);
}

TEST(Words, NameEveryCauseDifferently) {
    std::set<std::string_view> names;
    const int last = static_cast<int>(wifi::Cause::deauthenticated);
    for (int cause = static_cast<int>(wifi::Cause::unknown); cause <= last; ++cause) {
        EXPECT_TRUE(names.insert(causeName(static_cast<wifi::Cause>(cause))).second) << cause;
    }
}

TEST(SignalStrength, HasFourBars) {
    const std::vector<std::pair<int, int>> cases{{-40, 4}, {-55, 4}, {-56, 3}, {-67, 3}, {-68, 2},
                                                 {-75, 2}, {-76, 1}, {-85, 1}, {-86, 0}, {-100, 0}};
    for (const auto& [dBm, bars] : cases) {
        EXPECT_EQ(barsOf(dBm), bars) << dBm;
    }
    EXPECT_EQ(barsText(-60, true), "▂▄▆_");
    EXPECT_EQ(barsText(-60, false), "###.");
    EXPECT_EQ(barsText(-90, false), "....");
}

TEST(SignalStrength, IsUnknownWhereTheLibraryKnowsNone) {
    EXPECT_EQ(knownSignal(wifi::NoSignaldBm), std::nullopt);
    EXPECT_EQ(knownSignal(0), std::nullopt);
    EXPECT_EQ(knownSignal(-50), -50);
}

TEST(Words, NameTheObstacle) {
    wifi::NetworkAccess access;
    EXPECT_EQ(obstacleName(access), "other");
    access.demands.sae = true;
    access.demands.hashToElement = true;
    EXPECT_EQ(obstacleName(access), "hash-to-element");
    access.mode = wifi::SecurityMode::sae;
    EXPECT_EQ(obstacleName(access), "");
}

}  // namespace
}  // namespace kaz::ctl
