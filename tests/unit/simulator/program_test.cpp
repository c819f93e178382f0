#include "support/process/running_program.h"
#include "unit/simulator/device_fixture.h"

#include <signal.h>

#include <filesystem>

namespace kaz::sim::test {
namespace {

using kaz::test::RunningProgram;
using ::testing::StartsWith;

constexpr const char* program = KAZ_DEVICE_SIM;

TEST(Program, PrintsTheAddressOfItsBusAndRunsUntilItIsAskedToEnd) {
    for (const int signal : {SIGTERM, SIGINT}) {
        RunningProgram device({program, "--neighbourhood", KAZ_HOME_NEIGHBOURHOOD, "--time-scale", "0.01"});
        const std::string address = device.readLine();
        ASSERT_THAT(address, StartsWith("unix:path="));
        {
            BusClient client(address);
            EXPECT_EQ(client.get(systemdUnit, "ActiveState"), "active");
        }
        device.sendSignal(signal);
        EXPECT_EQ(device.wait().status, 0);
        EXPECT_FALSE(std::filesystem::exists(address.substr(std::string("unix:path=").size())));
    }
}

TEST(Program, ServesOnTheBusItIsGiven) {
    const PrivateBus bus;
    RunningProgram device({program, "--bus", bus.address()});
    EXPECT_EQ(device.readLine(), bus.address());
    BusClient client(bus.address());
    EXPECT_NE(client.ownerOf("fi.w1.wpa_supplicant1"), "");
    EXPECT_NE(client.ownerOf("com.kazwifi.Simulator1"), "");
}

TEST(Program, ExitsWithTheStatusOfTheCommandItRuns) {
    const std::pair<const char*, int> rows[] = {{"exit 0", 0}, {"exit 7", 7}, {"kill -9 $$", 137}};
    for (const auto& [script, status] : rows) {
        RunningProgram device({program, "--exec", "sh", "-c", script});
        EXPECT_EQ(device.wait().status, status) << script;
    }
    RunningProgram missing({program, "--exec", "/no/such/command"});
    EXPECT_EQ(missing.wait().status, 127);
}

TEST(Program, RunsTheCommandOnTheDevice) {
    RunningProgram device({program, "--exec", "busctl", "--address=unix:path=/nowhere", "--version"});
    EXPECT_EQ(device.wait().status, 0);
    RunningProgram shell({program, "--exec", "sh", "-c",
                          "echo $DBUS_SYSTEM_BUS_ADDRESS; echo $KAZ_CONFIG_FILE; test -d $KAZ_DEVICE_ROOT"});
    EXPECT_THAT(shell.readLine(), StartsWith("unix:path="));
    const std::filesystem::path file = shell.readLine();
    EXPECT_EQ(file.filename(), "kaz.conf");
    EXPECT_EQ(shell.wait().status, 0);
    EXPECT_FALSE(std::filesystem::exists(file.parent_path()));
}

TEST(Program, LeavesTheCallersConfigurationFileAlone) {
    RunningProgram device(
        {"env", "KAZ_CONFIG_FILE=/my/file", program, "--exec", "sh", "-c", "echo $KAZ_CONFIG_FILE"});
    EXPECT_EQ(device.readLine(), "/my/file");
    EXPECT_EQ(device.wait().status, 0);
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
        EXPECT_NE(RunningProgram(command).wait().status, 0) << command.at(1);
    }
}

TEST(Program, LeavesNothingBehindWhenItIsKilled) {
    RunningProgram device({program});
    const std::string address = device.readLine();
    device.sendSignal(SIGKILL);
    EXPECT_EQ(device.wait().signal, SIGKILL);
    const auto refuses = [&] {
        try {
            BusClient(address).ownerOf("com.kazwifi.Simulator1");
            return false;
        } catch (const std::system_error&) {
            return true;
        } catch (const CallFailed&) {
            return true;
        }
    };
    EXPECT_TRUE(eventually(refuses)) << "the bus still runs";
    std::filesystem::remove_all(
        std::filesystem::path(address.substr(std::string("unix:path=").size())).parent_path());
}

}  // namespace
}  // namespace kaz::sim::test
