// A new state and the callback that announces it belong together. This program's operator delete tells when the former
// state is destroyed, which is as soon as the new one is published.
#include "manager/published.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

// Called once, at the next delete.
thread_local std::function<void()>* atDelete = nullptr;

void release(void* memory) noexcept {
    if (auto* const function = std::exchange(atDelete, nullptr)) {
        (*function)();
    }
    std::free(memory);  // NOLINT(cppcoreguidelines-no-malloc): there is nothing else below operator delete
}

}  // namespace

// Not inlined, or the compiler sees memory of a new expression go to free().
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);  // NOLINT(cppcoreguidelines-no-malloc)
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    release(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}

namespace kaz::test {
namespace {

using wifi::Published;
using Change = Published::Change;

class Publication : public ::testing::Test {
  protected:
    // Publishes while another callback is registered as soon as the former state is gone.
    template <typename State>
    void publishAndReplaceCallback(Change change, State state) {
        std::function<void()> replace = [&] { published.onChange(change, [this] { told += "new "; }); };
        published.onChange(change, [this] { told += "former "; });
        atDelete = &replace;
        published.publish(std::move(state));
        EXPECT_EQ(atDelete, nullptr) << "nothing was destroyed";
    }

    const std::string longText = std::string(100, 'x');
    Published published;
    std::string told;
};

TEST_F(Publication, OfNetworksInvokesTheCallbackThatWasRegisteredAtThatMoment) {
    published.publish(std::vector<wifi::WifiNetwork>{{longText, -50, wifi::SecurityMode::none, false}});
    publishAndReplaceCallback(Change::networks, std::vector<wifi::WifiNetwork>());
    EXPECT_EQ(told, "former ");
    published.publish(std::vector<wifi::WifiNetwork>());
    EXPECT_EQ(told, "former new ");
}

TEST_F(Publication, OfTheConnectionInvokesTheCallbackThatWasRegisteredAtThatMoment) {
    wifi::ConnectionDetails details;
    details.info.ssid = longText;
    published.publish(details);
    publishAndReplaceCallback(Change::connectionInfo, wifi::ConnectionDetails());
    EXPECT_EQ(told, "former ");
    published.publish(details);
    EXPECT_EQ(told, "former new ");
}

}  // namespace
}  // namespace kaz::test
