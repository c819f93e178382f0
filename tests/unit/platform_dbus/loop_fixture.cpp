#include "unit/platform_dbus/loop_fixture.h"

#include <kaz/dbus/calls.h>
#include <unistd.h>

namespace kaz::test {

pid_t LoopTest::loopThread() {
    return onLoop([] { return ::gettid(); });
}

dbus::MessagePtr LoopTest::callPeer(const std::string& member, const std::string& argument) {
    auto made = dbus::makeDbusCall(loop->getSdBusHandle(), {peerName, peerPath, peerInterface}, member);
    if (made.message() != nullptr) {
        sd_bus_message_append(made.message(), "s", argument.c_str());
    }
    return dbus::MessagePtr(dbus::sendMessage(loop->getSdBusHandle(), made).message);
}

bool LoopTest::callFromLoop(const std::string& member, const std::string& argument) {
    return onLoop([&] { return callPeer(member, argument) != nullptr; });
}

void LoopTest::limitCalls(std::chrono::microseconds limit) {
    onLoop([&] {
        EXPECT_GE(
            sd_bus_set_method_call_timeout(loop->getSdBusHandle(), static_cast<uint64_t>(limit.count())), 0);
    });
}

void LoopTest::registerForChanged(bool temporary, std::function<void(dbus::MessageDecoder&)> handler) {
    onLoop([&] {
        loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Changed", temporary,
                                        std::move(handler));
    });
}

void LoopTest::countIdlePasses(Counter& passes, std::optional<milliseconds> delay) {
    loop->setIdleTaskSync([&passes, delay] {
        ++passes;
        return delay;
    });
}

std::string readString(dbus::MessageDecoder& decoder) {
    const char* text = "";
    EXPECT_GE(sd_bus_message_read(decoder.message, "s", &text), 0);
    return text;
}

}  // namespace kaz::test
