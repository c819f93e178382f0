#include "base/checked.h"
#include "base/file_descriptor.h"
#include "base/temporary_folder.h"
#include "inspection/inspect.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "simulator/world/neighbourhood.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kaz::inspection {
namespace {

using namespace std::chrono_literals;

class InspectedBus : public ::testing::Test {
  protected:
    ~InspectedBus() override { ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    Facts look(const std::string& address, std::chrono::milliseconds limit) {
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
        return inspect({root_.path(), "/kaz.conf", false, limit});
    }

    TemporaryFolder root_;
};

TEST_F(InspectedBus, WithoutDaemonsHasNames) {
    const sim::PrivateBus bus;
    const Facts facts = look(bus.address(), 60s);
    ASSERT_TRUE(facts.busNames.isKnown());
    EXPECT_TRUE(facts.busNames->contains("org.freedesktop.DBus"));
    EXPECT_TRUE(facts.unit.isAbsent());
    EXPECT_TRUE(facts.supplicant.isAbsent());
    EXPECT_TRUE(facts.onlineState.isAbsent());
}

TEST_F(InspectedBus, ThatIsMissingIsNamed) {
    const Facts facts = look("unix:path=" + (root_ / "nowhere").string(), 60s);
    ASSERT_TRUE(facts.busNames.isUnknown());
    EXPECT_EQ(facts.busNames.why(), "No such file or directory");
}

// Accepts connections, and never says a word.
TEST_F(InspectedBus, ThatHangsTakesNoLongerThanTheLimit) {
    const std::string path = root_ / "bus";
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{AF_UNIX, ""};
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(socket.get(), 8), 0);
    const auto began = std::chrono::steady_clock::now();
    const Facts facts = look("unix:path=" + path, 50ms);
    EXPECT_LT(std::chrono::steady_clock::now() - began, 10s);
    EXPECT_TRUE(facts.busNames.is(Obstacle::noAnswer));
    EXPECT_TRUE(facts.supplicant.is(Obstacle::noAnswer));
}

// The bus has a limit for the calls of one connection at the same time.
TEST_F(InspectedBus, ALongListOfNetworksIsReadToItsEnd) {
    constexpr std::size_t many = 300;
    const sim::PrivateBus bus;
    sim::Neighbourhood neighbourhood;
    for (std::size_t i = 0; i < many; ++i) {
        sim::Settings settings;
        settings.emplace_back("ssid", sim::ByteSetting{"Network " + std::to_string(i)});
        settings.emplace_back("key_mgmt", std::string("NONE"));
        neighbourhood.configuredNetworks.push_back(settings);
    }
    const sim::SimulatedDevice device({bus.address(), neighbourhood, 0.01, root_ / "supplicant.conf"});
    const Facts facts = look(bus.address(), 60s);
    ASSERT_TRUE(facts.supplicant.isKnown());
    const auto& networks = facts.supplicant->interfaces.front().networks;
    ASSERT_TRUE(networks.isKnown());
    ASSERT_EQ(networks->size(), many);
    EXPECT_EQ(networks->back().ssid, "Network 299");
}

TEST_F(InspectedBus, ANetworkThatIsNotToldInTimeLeavesTheListUnknown) {
    const sim::PrivateBus bus;
    sim::Neighbourhood neighbourhood;
    sim::Settings settings;
    settings.emplace_back("ssid", sim::ByteSetting{"Home"});
    settings.emplace_back("key_mgmt", std::string("NONE"));
    neighbourhood.configuredNetworks = {settings, settings};
    sim::SimulatedDevice device({bus.address(), neighbourhood, 0.01, root_ / "supplicant.conf"});
    device.orderFault({.peer = "supplicant",
                       .member = "GetAll",
                       .argument = "fi.w1.wpa_supplicant1.Network",
                       .nth = 2,
                       .kind = sim::FaultKind::noReply});
    const Facts facts = look(bus.address(), 500ms);
    ASSERT_TRUE(facts.supplicant.isKnown());
    EXPECT_TRUE(facts.supplicant->interfaces.front().networks.is(Obstacle::noAnswer));
}

}  // namespace
}  // namespace kaz::inspection
