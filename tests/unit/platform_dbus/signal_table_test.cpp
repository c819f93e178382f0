// Subscriptions that a bus does not answer.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>

#include <chrono>

#include "doubles/recording_log/recording_log.h"
#include "platform/dbus/handles.h"
#include "platform/dbus/signal_table.h"
#include "simulator/private_bus/private_bus.h"

namespace kaz::test {
namespace {

using std::chrono::microseconds;

constexpr uint64_t callLimit = 20'000;  // us

class SignalTable : public ::testing::Test {
  protected:
    SignalTable() { daemon_.becomeSystemBus(); }

    // A new connection to a bus that hangs from now on.
    dbus::BusPtr connectAndHang() {
        sd_bus* opened = nullptr;
        EXPECT_GE(sd_bus_open_system(&opened), 0);
        dbus::BusPtr bus(opened);
        const char* name = nullptr;
        EXPECT_GE(sd_bus_get_unique_name(opened, &name), 0);
        ucred credentials{};
        socklen_t size = sizeof credentials;
        ::getsockopt(sd_bus_get_fd(opened), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
        pid_ = credentials.pid;
        EXPECT_GT(pid_, 0);
        sd_bus_set_method_call_timeout(opened, callLimit);
        ::kill(pid_, SIGSTOP);
        return bus;
    }
    void goOn() const { ::kill(pid_, SIGCONT); }

    void add(const char* member, bool temporary) {
        table.add({"test.Peer", "/", "test.Interface", member}, temporary, [](dbus::MessageDecoder&) {});
    }

    RecordingLog log;
    dbus::SignalTable table;

  private:
    sim::PrivateBus daemon_;
    pid_t pid_ = 0;
};

// Otherwise a bus that never takes it would cost one connection after the other.
TEST_F(SignalTable, TemporarySubscriptionThatFailsAgainKeepsTheConnection) {
    const dbus::BusPtr first = connectAndHang();
    EXPECT_EQ(table.attach(first.get()), 0);
    add("Changed", true);
    EXPECT_EQ(sd_bus_is_open(first.get()), 0);
    table.detach();
    table.removeTemporary();
    goOn();

    const dbus::BusPtr second = connectAndHang();
    EXPECT_EQ(table.attach(second.get()), 0);
    add("Changed", true);
    EXPECT_GT(sd_bus_is_open(second.get()), 0);
    EXPECT_EQ(log.records().size(), 2U);
    table.detach();
    goOn();
}

// The others need no connection of their own: they would only wait for the same bus.
TEST_F(SignalTable, SubscriptionsThatNeverWorkCostOneConnectionTogether) {
    add("One", false);
    add("Two", false);
    add("Three", false);
    for (int connection = 0; connection < 4; ++connection) {
        log.clear();
        const dbus::BusPtr bus = connectAndHang();
        const int result = table.attach(bus.get());
        EXPECT_EQ(result, connection < 1 ? -ETIMEDOUT : 0) << connection;
        EXPECT_EQ(log.records().size(), connection < 1 ? 1U : 3U) << connection;
        table.detach();
        goOn();
    }
}

TEST_F(SignalTable, ABusThatHangsIsWaitedForOnce) {
    constexpr std::chrono::seconds limit{1};
    constexpr int subscriptions = 10;
    for (int i = 0; i < subscriptions; ++i) {
        add("Changed", false);
    }
    const dbus::BusPtr first = connectAndHang();
    EXPECT_EQ(table.attach(first.get()), -ETIMEDOUT);
    table.detach();
    goOn();

    const dbus::BusPtr second = connectAndHang();
    sd_bus_set_method_call_timeout(second.get(), static_cast<uint64_t>(microseconds(limit).count()));
    log.clear();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(table.attach(second.get()), 0);
    add("Changed", true);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, subscriptions * limit / 2);
    EXPECT_EQ(log.records().size(), subscriptions + 1U);
    uint64_t after = 0;
    sd_bus_get_method_call_timeout(second.get(), &after);
    EXPECT_EQ(after, static_cast<uint64_t>(microseconds(limit).count())) << "other calls keep their limit";
    table.detach();
    goOn();
}

TEST_F(SignalTable, SubscriptionThatWorkedMayCostAConnectionAgain) {
    add("One", false);
    const dbus::BusPtr hanging = connectAndHang();
    EXPECT_EQ(table.attach(hanging.get()), -ETIMEDOUT);
    table.detach();
    goOn();

    const dbus::BusPtr working = connectAndHang();
    goOn();
    sd_bus_set_method_call_timeout(working.get(), 0);
    EXPECT_EQ(table.attach(working.get()), 0);
    table.detach();

    const dbus::BusPtr again = connectAndHang();
    EXPECT_EQ(table.attach(again.get()), -ETIMEDOUT);
    table.detach();
    goOn();
}

}  // namespace
}  // namespace kaz::test
