// A variant may carry a passphrase. A separate program, because it replaces operator new and delete.
#include "dbus/variant.h"
#include "doubles/stub_bus/stub_bus.h"
#include "support/freed_memory_watch/freed_memory_watch.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace kaz::dbus {
namespace {

// Too long for a string's small buffer, so it is on the heap, which is watched.
const std::string passphrase = "correct horse battery staple, and then some";

class VariantSecrets : public testing::Test {
  protected:
    const test::StubBus bus;
    const test::FreedMemoryWatch watch{passphrase};
};

TEST_F(VariantSecrets, WatchNoticesAPlainString) {
    { const std::string careless = passphrase; }
    EXPECT_EQ(watch.leaks(), 1U);
}

TEST_F(VariantSecrets, AreWipedWhenATextEnds) {
    { const Variant fromReference(passphrase); }
    { const Variant fromLiteral(passphrase.c_str()); }
    {
        std::string mine = passphrase;
        const Variant fromRvalue(std::move(mine));
    }
    EXPECT_EQ(watch.leaks(), 0U);
}

TEST_F(VariantSecrets, AreWipedInEveryCopy) {
    {
        const Variant original(passphrase);
        Variant copy = original;
        const Variant moved = std::move(copy);
        Variant overwritten(passphrase);
        overwritten = moved;
        overwritten = 1;
    }
    EXPECT_EQ(watch.leaks(), 0U);
}

TEST_F(VariantSecrets, AreWipedInsideDictionaries) {
    {
        Variant::Map map;
        map.emplace("psk", passphrase);
        const Variant nested{Variant::Map(map)};
        const MessagePtr message = bus.message();
        sd_bus_message_sensitive(message.get());
        EXPECT_TRUE(write(message.get(), map));
        EXPECT_TRUE(write(message.get(), nested));
    }
    EXPECT_EQ(watch.leaks(), 0U);
}

}  // namespace
}  // namespace kaz::dbus
