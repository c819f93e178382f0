// A bus that does not answer when the owner of a name is asked for.
#include "base/sd_bus/handles.h"
#include "dbus/name_owner.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/private_bus/private_bus.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

namespace kaz::test {
namespace {

constexpr const char* name = "test.Peer";

class UnknownOwner : public ::testing::Test {
  protected:
    UnknownOwner() {
        daemon_.becomeSystemBus();
        own_ = open();
        peer_ = open();
        EXPECT_GE(sd_bus_request_name(peer_.get(), name, 0), 0);
        EXPECT_GE(sd_bus_add_match(own_.get(), nullptr, "interface='test.Interface'", &UnknownOwner::onSignal,
                                   this),
                  0);
    }

    // Runs the function while the bus is stopped.
    void whileTheBusHangs(const std::function<void()>& function) {
        ucred credentials{};
        socklen_t size = sizeof credentials;
        ::getsockopt(sd_bus_get_fd(own_.get()), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
        sd_bus_set_method_call_timeout(own_.get(), 1000);
        ::kill(credentials.pid, SIGSTOP);
        function();
        ::kill(credentials.pid, SIGCONT);
        sd_bus_set_method_call_timeout(own_.get(), 0);
    }

    void attach(dbus::NameOwner& owner) { owner.attach(own_.get()); }

    void attachInVain(dbus::NameOwner& owner) {
        whileTheBusHangs([&] { attach(owner); });
    }

    // A signal of the peer, as it arrives.
    sd_bus_message* signal() {
        EXPECT_GE(sd_bus_emit_signal(peer_.get(), "/", "test.Interface", "Changed", ""), 0);
        EXPECT_GE(sd_bus_flush(peer_.get()), 0);
        received_.reset();
        while (!received_ && sd_bus_is_open(own_.get()) > 0) {
            if (sd_bus_process(own_.get(), nullptr) == 0) {
                sd_bus_wait(own_.get(), UINT64_MAX);
            }
        }
        return received_.get();
    }

    // Attaches in vain and misses a message.
    void missAMessage(dbus::NameOwner& owner) {
        attachInVain(owner);
        sd_bus_message* const message = signal();
        whileTheBusHangs([&] { EXPECT_FALSE(owner.sent(message)); });
    }

    RecordingLog log;

  private:
    static dbus::BusPtr open() {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_system(&bus), 0);
        return dbus::BusPtr(bus);
    }
    static int onSignal(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        static_cast<UnknownOwner*>(self)->received_.reset(sd_bus_message_ref(message));
        return 0;
    }

    sim::PrivateBus daemon_;
    dbus::BusPtr own_;
    dbus::BusPtr peer_;
    dbus::MessagePtr received_;
};

TEST_F(UnknownOwner, IsAskedForAgainWhenASignalArrives) {
    dbus::NameOwner owner(name);
    attachInVain(owner);
    EXPECT_TRUE(owner.unknown());
    EXPECT_EQ(log.texts(spdlog::level::warn),
              std::vector<std::string>{"Cannot follow the owner of test.Peer: Connection timed out"});
    EXPECT_TRUE(owner.sent(signal()));
    EXPECT_FALSE(owner.unknown());
}

// Each time may take as long as two calls that are not answered.
TEST_F(UnknownOwner, IsAskedForOnceHoweverManySignalsArriveInTheNextSeconds) {
    dbus::NameOwner owner(name, std::chrono::hours(1));
    attachInVain(owner);
    sd_bus_message* const message = signal();
    whileTheBusHangs([&] {
        for (int i = 0; i < 5; ++i) {
            EXPECT_FALSE(owner.sent(message));
        }
    });
    EXPECT_EQ(log.texts(spdlog::level::warn).size(), 2U);
    EXPECT_FALSE(owner.sent(signal()));
    owner.detach();
    EXPECT_TRUE(owner.sent(signal())) << "a new connection does not wait";
}

TEST_F(UnknownOwner, IsAskedForAgainAfterThePause) {
    constexpr std::chrono::milliseconds pause{50};
    dbus::NameOwner owner(name, pause);
    missAMessage(owner);
    const auto begin = std::chrono::steady_clock::now();
    sd_bus_message* const message = signal();
    while (!owner.sent(message)) {
        ASSERT_LT(std::chrono::steady_clock::now() - begin, std::chrono::minutes(1));
        std::this_thread::sleep_for(pause);
    }
    EXPECT_EQ(log.texts(spdlog::level::warn).size(), 2U);
}

TEST_F(UnknownOwner, IsToldOfOnceAfterAMessageWasMissed) {
    dbus::NameOwner owner(name, std::chrono::hours(1));
    missAMessage(owner);
    EXPECT_FALSE(owner.takeMissed()) << "still unknown";
    attach(owner);
    EXPECT_TRUE(owner.takeMissed());
    EXPECT_FALSE(owner.takeMissed());
}

TEST_F(UnknownOwner, OfAFormerConnectionMissedNothingOnTheNextOne) {
    dbus::NameOwner owner(name, std::chrono::hours(1));
    missAMessage(owner);
    owner.detach();
    attach(owner);
    EXPECT_FALSE(owner.takeMissed());
}

TEST_F(UnknownOwner, IsFollowedOnceItIsKnown) {
    dbus::NameOwner owner(name);
    attachInVain(owner);
    EXPECT_TRUE(owner.sent(signal()));
    EXPECT_TRUE(owner.sent(signal()));
    EXPECT_EQ(log.records().size(), 1U);
}

}  // namespace
}  // namespace kaz::test
