#include <signal.h>

#include <filesystem>

#include "unit/simulator/child_program.h"
#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::StartsWith;

constexpr const char* program = KAZ_DEVICE_SIM;

TEST(Program, PrintsTheAddressOfItsBusAndRunsUntilItIsAskedToEnd) {
    for (const int signal : {SIGTERM, SIGINT}) {
        ChildProgram device({program, "--neighbourhood", KAZ_HOME_NEIGHBOURHOOD, "--time-scale", "0.01"});
        const std::string address = device.readLine();
        ASSERT_THAT(address, StartsWith("unix:path="));
        {
            BusClient client(address);
            EXPECT_EQ(client.get(systemdUnit, "ActiveState"), "active");
        }
        device.signal(signal);
        EXPECT_EQ(device.wait(), 0);
        EXPECT_FALSE(std::filesystem::exists(address.substr(std::string("unix:path=").size())));
    }
}

TEST(Program, ServesOnTheBusItIsGiven) {
    const PrivateBus bus;
    ChildProgram device({program, "--bus", bus.address()});
    EXPECT_EQ(device.readLine(), bus.address());
    BusClient client(bus.address());
    EXPECT_NE(client.ownerOf("fi.w1.wpa_supplicant1"), "");
    EXPECT_NE(client.ownerOf("com.kazwifi.Simulator1"), "");
}

TEST(Program, ExitsWithTheStatusOfTheCommandItRuns) {
    const std::pair<const char*, int> rows[] = {{"exit 0", 0}, {"exit 7", 7}, {"kill -9 $$", 137}};
    for (const auto& [script, status] : rows) {
        ChildProgram device({program, "--exec", "sh", "-c", script});
        EXPECT_EQ(device.wait(), status) << script;
    }
    ChildProgram missing({program, "--exec", "/no/such/command"});
    EXPECT_EQ(missing.wait(), 127);
}

TEST(Program, RunsTheCommandOnTheDevice) {
    ChildProgram device({program, "--exec", "busctl", "--address=unix:path=/nowhere", "--version"});
    EXPECT_EQ(device.wait(), 0);
    ChildProgram shell(
        {program, "--exec", "sh", "-c", "echo $DBUS_SYSTEM_BUS_ADDRESS; echo $KAZ_CONFIG_FILE"});
    EXPECT_THAT(shell.readLine(), StartsWith("unix:path="));
    const std::filesystem::path file = shell.readLine();
    EXPECT_EQ(file.filename(), "kaz.conf");
    EXPECT_EQ(shell.wait(), 0);
    EXPECT_FALSE(std::filesystem::exists(file.parent_path()));
}

TEST(Program, LeavesTheCallersConfigurationFileAlone) {
    ChildProgram device(
        {"env", "KAZ_CONFIG_FILE=/my/file", program, "--exec", "sh", "-c", "echo $KAZ_CONFIG_FILE"});
    EXPECT_EQ(device.readLine(), "/my/file");
    EXPECT_EQ(device.wait(), 0);
}

TEST(Program, RefusesArgumentsThatCannotBe) {
    const std::vector<std::vector<std::string>> rows = {
        {program, "--neighbourhood", "/no/such/file"},
        {program, "--time-scale", "0"},
        {program, "--time-scale", "fast"},
        {program, "--bus", "nonsense"},
        {program, "--exec"},
        {program, "--bogus"},
    };
    for (const auto& command : rows) {
        EXPECT_NE(ChildProgram(command).wait(), 0) << command.at(1);
    }
}

TEST(Program, LeavesNothingBehindWhenItIsKilled) {
    ChildProgram device({program});
    const std::string address = device.readLine();
    device.signal(SIGKILL);
    EXPECT_EQ(device.wait(), 128 + SIGKILL);
    const auto end = std::chrono::steady_clock::now() + generous;
    bool refused = false;
    while (!refused && std::chrono::steady_clock::now() < end) {
        try {
            BusClient client(address);
            client.ownerOf("com.kazwifi.Simulator1");
        } catch (const std::system_error&) {
            refused = true;
        } catch (const CallFailed&) {
            refused = true;
        }
    }
    EXPECT_TRUE(refused) << "the bus still runs";
    std::filesystem::remove_all(
        std::filesystem::path(address.substr(std::string("unix:path=").size())).parent_path());
}

}  // namespace
}  // namespace kaz::sim::test
