#include "kazwifictl/text/network_table.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "kazwifictl/text/unicode.h"
#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using test::connectedTo;
using test::network;
using wifi::ConnectionInfo;
using wifi::SecurityMode;

const Terminal plain{false, true, false, 0};
const Terminal ascii{false, false, false, 0};

std::vector<NetworkRow> someRows() {
    return networkRows(
        {network("Weak", -84, SecurityMode::none), network("Office", -60, SecurityMode::enterprise),
         network("東京カフェ", -60, SecurityMode::rsnPsk, true)},
        connectedTo("Home", -48));
}

TEST(NetworkTable, PutsTheNetworkInUseFirstAndThenTheStrongest) {
    EXPECT_EQ(networkTable(someRows(), plain),
              "  SSID        SIGNAL         SECURITY        STATE\n"
              "* Home        ▂▄▆█  -48 dBm  -               connected\n"
              "  Office      ▂▄▆_  -60 dBm  WPA enterprise\n"
              "  東京カフェ  ▂▄▆_  -60 dBm  WPA2 personal   saved\n"
              "  Weak        ▂___  -84 dBm  open\n");
}

TEST(NetworkTable, UsesAsciiWhereThatIsAllThereIs) {
    EXPECT_EQ(networkTable(networkRows({network("Café", -70, SecurityMode::wep)}, {}), ascii),
              "  SSID       SIGNAL         SECURITY  STATE\n"
              "  Caf\\u{e9}  ##..  -70 dBm  WEP\n");
}

TEST(NetworkTable, ColoursByStrengthAndMarksTheCurrentOne) {
    EXPECT_EQ(networkTable(someRows(), {false, true, true, 0}),
              "  \x1b[2mSSID\x1b[0m        \x1b[2mSIGNAL\x1b[0m         \x1b[2mSECURITY\x1b[0m        "
              "\x1b[2mSTATE\x1b[0m\n"
              "* \x1b[1mHome\x1b[0m        \x1b[32m▂▄▆█  -48 dBm\x1b[0m  -               connected\n"
              "  Office      \x1b[32m▂▄▆_  -60 dBm\x1b[0m  WPA enterprise\n"
              "  東京カフェ  \x1b[32m▂▄▆_  -60 dBm\x1b[0m  WPA2 personal   saved\n"
              "  Weak        \x1b[31m▂___  -84 dBm\x1b[0m  open\n");
}

TEST(NetworkTable, ShowsTheSecurityOfTheNetworkInUse) {
    const auto rows =
        networkRows({}, connectedTo("Home", -48), {}, {SecurityMode::sae, {2, 0, 0, 0, 0, 1}, 2437, 0});
    EXPECT_EQ(networkTable(rows, plain),
              "  SSID  SIGNAL         SECURITY       STATE\n"
              "* Home  ▂▄▆█  -48 dBm  WPA3 personal  connected\n");
}

TEST(NetworkTable, LeavesOutTheLeastImportantFirstOnANarrowTerminal) {
    const auto rows = networkRows({network("A name that is far too long", -60, SecurityMode::rsnPsk, true)},
                                  connectedTo("Home", -48));
    const auto at = [&rows](int columns) { return networkTable(rows, {true, true, false, columns}); };
    EXPECT_EQ(at(72),
              "  SSID                         SIGNAL         SECURITY       STATE\n"
              "* Home                         ▂▄▆█  -48 dBm  -              connected\n"
              "  A name that is far too long  ▂▄▆_  -60 dBm  WPA2 personal  saved\n");
    EXPECT_EQ(at(64),
              "  SSID                         SIGNAL  SECURITY       STATE\n"
              "* Home                         ▂▄▆█    -              connected\n"
              "  A name that is far too long  ▂▄▆_    WPA2 personal  saved\n");
    EXPECT_EQ(at(48),
              "  SSID                     SIG   SEC   STATE\n"
              "* Home                     ▂▄▆█  -     connected\n"
              "  A name that is far too…  ▂▄▆_  WPA2  saved\n");
    EXPECT_EQ(at(40),
              "  SSID                   SEC   STATE\n"
              "* Home                   -     connected\n"
              "  A name that is far t…  WPA2  saved\n");
    EXPECT_EQ(at(30),
              "  SSID               STATE\n"
              "* Home               connected\n"
              "  A name that is f…  saved\n");
}

TEST(NetworkTable, NeverWritesALineThatIsWiderThanTheTerminal) {
    auto rows = someRows();
    rows.push_back({std::string(32, 'x'), -50, SecurityMode::rsnPsk, true});
    rows.push_back({"日本日本日本日本日本", -51, SecurityMode::enterprise, true});
    for (int columns = 10; columns < 100; ++columns) {
        const std::string text = networkTable(rows, {true, true, false, columns});
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(columnsOf(line), columns) << text;
        }
    }
}

TEST(NetworkTable, KeepsRightToLeftNamesFromMovingTheirNeighbours) {
    const auto rows = networkRows({network("שלום", -60, SecurityMode::none)}, {});
    EXPECT_NE(networkTable(rows, {true, true, false, 80}).find("\u200eשלום\u200e  "), std::string::npos);
    EXPECT_EQ(networkTable(rows, plain).find("\u200e"), std::string::npos);
}

TEST(NetworkTable, ShowsTheStateOfTheConnectionInUse) {
    ConnectionInfo connecting;
    connecting.status = ConnectionInfo::Status::connectingWifi;
    connecting.ssid = "New";
    connecting.signal = wifi::NoSignaldBm;
    EXPECT_EQ(networkTable(networkRows({}, connecting), plain),
              "  SSID  SIGNAL  SECURITY  STATE\n"
              "* New   -       -         connecting\n");
}

TEST(NetworkTable, TakesANetworkThatIsBothListedAndInUseAsOne) {
    const auto rows =
        networkRows({network("Home", -48, SecurityMode::rsnPsk, true)}, connectedTo("Home", -47));
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows.front().security, SecurityMode::rsnPsk);
    EXPECT_EQ(rows.front().dBm, -47);
    EXPECT_TRUE(rows.front().saved);
}

TEST(NetworkTable, NamesWhatANetworkAsksForThatCannotBeJoined) {
    wifi::NetworkAccess closed;
    closed.demands.owe = true;
    const Accesses accesses{
        {"Cafe", closed}, {"Future", {{}, SecurityMode::sae}}, {"Home", {{}, SecurityMode::rsnPsk}}};
    const auto rows = networkRows(
        {network("Cafe", -60, SecurityMode::unsupported), network("Future", -61, SecurityMode::unsupported)},
        connectedTo("Home", -47), accesses);
    EXPECT_EQ(networkTable(rows, plain),
              "  SSID    SIGNAL         SECURITY       STATE\n"
              "* Home    ▂▄▆█  -47 dBm  WPA2 personal  connected\n"
              "  Cafe    ▂▄▆_  -60 dBm  Enhanced Open\n"
              "  Future  ▂▄▆_  -61 dBm  WPA3 personal\n");
}

TEST(NetworkTable, SaysWhenThereIsNothing) {
    EXPECT_EQ(networkTable({}, plain), "No networks in range.\n");
}

}  // namespace
}  // namespace kaz::ctl
