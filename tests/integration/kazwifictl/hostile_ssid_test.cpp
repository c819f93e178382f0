// Tests with SSIDs that a stranger chose to do harm.
#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "base/hex.h"
#include "integration/kazwifictl/command_fixture.h"

namespace kaz::test {
namespace {

using namespace std::string_literals;

std::vector<std::string> hostileSsids() {
    return {
        "\x1b[2J\x1b[31mred"s,       // clears the screen, changes the colour
        "\x1b]0;title\x07"s,         // sets the window's title
        "over\rwrite\nline\tx"s,     // moves the cursor
        "\u202egnp.exe"s,            // reverses what follows
        "\u2066\u2067mixed"s,        // direction isolates
        "\xff\xfe broken \xc3"s,     // is not UTF-8
        "日日日日日日日日日日"s,     // as wide as 30 bytes can be
        "NUL\0in it"s,               // ends C strings
        "\u009b31mC1"s,              // CSI as a C1 control character
        "$(reboot) `id` ; rm -rf"s,  // runs commands in a shell
        std::string(32, '\x01'),
        " leading and trailing "s,
        "\\x1b is not an escape"s,
        "zalgo\u0301\u0302\u0303\u0304\u0305\u0306"s,
    };
}

class HostileSsid : public CommandFixture {
  protected:
    HostileSsid() {
        neighbourhood.accessPoints.clear();
        std::int16_t signal = -40;
        for (const std::string& ssid : hostileSsids()) {
            neighbourhood.accessPoints.push_back(accessPoint(ssid, sim::Security::open, signal));
            signal = static_cast<std::int16_t>(signal - 2);
        }
    }

    // The text must contain only printable characters and line breaks.
    static void expectHarmless(const std::string& text) {
        for (const std::string& bad : {"\x1b"s, "\x07"s, "\r"s, "\t"s, "\0"s, "\x01"s, "\u202e"s, "\u2066"s,
                                       "\u2067"s, "\u009b"s, "\xff"s}) {
            EXPECT_EQ(text.find(bad), std::string::npos) << toHex(bad) << " in\n" << text;
        }
    }
};

TEST_F(HostileSsid, DoesNoHarmInAnyOutput) {
    start();
    const std::string list = runs(0, {"scan"}).out;
    expectHarmless(list);
    EXPECT_NE(list.find("\\x1b[2J\\x1b[31mred"), std::string::npos) << list;
    EXPECT_NE(list.find("\\u{202e}gnp.exe"), std::string::npos) << list;
    EXPECT_NE(list.find("NUL\\x00in it"), std::string::npos) << list;
    expectHarmless(runs(0, {"list", "--names"}).out);
    for (const std::string& ssid : hostileSsids()) {
        const Finished connected = runs(0, {"-v", "connect", "--hex", toHex(ssid)});
        const Finished forgotten = runs(0, {"-v", "forget", "--hex", toHex(ssid)});
        for (const std::string& output : {connected.out, connected.err, forgotten.out, forgotten.err}) {
            expectHarmless(output);
        }
    }
}

TEST_F(HostileSsid, DoesNoHarmInTheStatus) {
    startAndScan();
    runs(0, {"connect", "--hex", toHex(hostileSsids().front())});
    const std::string status = runs(0, {"status"}).out;
    expectHarmless(status);
    EXPECT_NE(status.find("connected to \"\\x1b[2J"), std::string::npos) << status;
}

TEST_F(HostileSsid, KeepsTheTableStraight) {
    startAndScan();
    const auto program = inTerminal({"list", "--color", "never"}, 60);
    program->wait();
    std::istringstream screen(screenOf(program->out()));
    std::size_t lines = 0;
    for (std::string line; std::getline(screen, line); ++lines) {
        EXPECT_TRUE(has(line, lines == 0 ? "SECURITY" : "open")) << line;
    }
    EXPECT_EQ(lines, hostileSsids().size() + 1);
}

TEST_F(HostileSsid, IsInJsonByteForByte) {
    start();
    const std::string out = runs(0, {"scan", "--json"}).out;
    expectHarmless(out);
    const auto networks = nlohmann::json::parse(out).at("networks");
    ASSERT_EQ(networks.size(), hostileSsids().size());
    for (std::size_t i = 0; i < networks.size(); ++i) {
        EXPECT_EQ(networks.at(i).at("ssid_hex"), toHex(hostileSsids().at(i)));
    }
}

TEST_F(HostileSsid, DoesNoHarmInAMonitor) {
    startAndScan();
    const auto program = withPipes({"monitor", "-v"});
    ASSERT_TRUE(program->waitFor("zalgo"));
    runs(0, {"connect", "--hex", toHex(hostileSsids().front())});
    ASSERT_TRUE(program->waitFor("connected to \"\\x1b[2J")) << program->out();
    program->sendSignal(SIGTERM);
    EXPECT_EQ(program->wait().status, 0);
    expectHarmless(program->out());
    expectHarmless(program->err());
}

}  // namespace
}  // namespace kaz::test
