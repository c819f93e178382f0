// Calls fail in the ways in which a bus and its peers can fail, while the Manager works with the daemons of a device.
#include "support/bus_proxy/bus_proxy.h"
#include "vm/chaos_oracle.h"
#include "vm/chaos_world.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <array>
#include <cstdlib>
#include <ostream>
#include <string>

namespace kaz::vm {
namespace {

using test::BusProxy;
using Fault = BusProxy::Fault;

struct Call {
    std::string name;
    std::string member;
    std::string argument;  // a part of its text arguments
    bool connected;        // while it is made
    void (*request)(wifi::Manager& manager);
};

void PrintTo(const Call& call, std::ostream* out) {
    *out << call.name;
}

void connect(wifi::Manager& manager) {
    EXPECT_EQ(manager.connect(wpa2Network), wifi::ConnectResult::ok);
}
void connectConfigured(wifi::Manager& manager) {
    manager.connectConfigured(wpa2Network.ssid);
}
void disconnect(wifi::Manager& manager) {
    manager.disconnect();
}
void forget(wifi::Manager& manager) {
    manager.forgetNetwork(wpa2Network.ssid);
}
void scan(wifi::Manager& manager) {
    manager.scan();
}
void wait(wifi::Manager& /*manager*/) {}  // the signal is polled

class FaultsOnTheAir : public DeviceTest, public ::testing::WithParamInterface<Call> {
  protected:
    FaultsOnTheAir() { proxy_.becomeSystemBus(); }
    ~FaultsOnTheAir() override { ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    // Returns what is wrong once the next calls have succeeded, or an empty text.
    std::string wrongAfter(Fault fault, const Call& call, World& world, bool connects) {
        if (call.connected && !device().connects(wpa2Network)) {
            return "no connection\n";
        }
        proxy_.order({fault, call.member, call.argument});
        call.request(manager());
        // The signal is polled as often as this has its time limit.
        if (!proxy_.waitForFault() && !proxy_.waitForFault()) {
            return "no such call\n";
        }
        proxy_.release();
        if (!device().attaches()) {
            return "not attached\n";
        }
        const std::string failure = failureToWork(world, Random(), connects);
        return failure.empty() ? difference(world) : failure;
    }

  private:
    BusProxy proxy_{"unix:path=/run/dbus/system_bus_socket"};
};

TEST_P(FaultsOnTheAir, EndWithoutATraceWhenTheNextCallsSucceed) {
    constexpr std::array faults{Fault::refuse,      Fault::swallow,       Fault::loseReply, Fault::holdReply,
                                Fault::repeatReply, Fault::truncateReply, Fault::cutBefore, Fault::cutAfter};
    World world(device());
    for (const Fault fault : faults) {
        EXPECT_EQ(wrongAfter(fault, GetParam(), world, fault == faults.back()), "")
            << "fault " << static_cast<int>(fault);
    }
}

INSTANTIATE_TEST_SUITE_P(All, FaultsOnTheAir,
                         ::testing::Values(Call{"Scan", "Scan", "", false, &scan},
                                           Call{"AccessPoint", "GetAll", "fi.w1.wpa_supplicant1.BSS", false,
                                                &scan},
                                           Call{"AddNetwork", "AddNetwork", "", false, &connect},
                                           Call{"SelectNetwork", "SelectNetwork", "", false, &connect},
                                           Call{"Networks", "Get", "Networks", true, &connectConfigured},
                                           Call{"SignalPoll", "SignalPoll", "", true, &wait},
                                           Call{"Disconnect", "Disconnect", "", true, &disconnect},
                                           Call{"SaveConfig", "SaveConfig", "", false, &connect},
                                           Call{"RemoveNetwork", "RemoveNetwork", "", true, &forget}),
                         [](const auto& call) { return call.param.name; });

}  // namespace
}  // namespace kaz::vm
