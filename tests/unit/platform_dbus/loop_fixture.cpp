#include "unit/platform_dbus/loop_fixture.h"

#include <kaz/dbus/calls.h>
#include <unistd.h>

namespace kaz::test {

LoopTest::LoopTest() {
    bus.becomeSystemBus();
    loop = std::make_unique<dbus::EventLoop>();
}

LoopTest::Running LoopTest::start() {
    loop->startEventLoopAsync();
    return Running(*this);
}

void LoopTest::end() {
    delete loop.get();
    static_cast<void>(loop.release());
}

pid_t LoopTest::loopThread() {
    return onLoop([] { return ::gettid(); });
}

std::string LoopTest::loopUniqueName() {
    return onLoop([this] {
        const char* name = "";
        sd_bus_get_unique_name(loop->getSdBusHandle(), &name);
        return std::string(name);
    });
}

bool LoopTest::callFromLoop(const std::string& member, const std::string& argument) {
    return onLoop([&] {
        auto call = dbus::makeDbusCall(loop->getSdBusHandle(), {peerName, peerPath, peerInterface}, member);
        if (call.message() != nullptr) {
            sd_bus_message_append(call.message(), "s", argument.c_str());
        }
        const dbus::MessagePtr reply(dbus::sendMessage(loop->getSdBusHandle(), call).message);
        return reply != nullptr;
    });
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

std::string readString(dbus::MessageDecoder& decoder) {
    const char* text = "";
    EXPECT_GE(sd_bus_message_read(decoder.message, "s", &text), 0);
    return text;
}

}  // namespace kaz::test
