// Memory runs out while an error is reported.
#include "dbus/variant.h"
#include "support/out_of_memory/out_of_memory.h"
#include "unit/dbus/codec_fixture.h"

#include <new>

namespace kaz::dbus {
namespace {

using test::OutOfMemory;

class Exceptions : public CodecTest {
  protected:
    const MessagePtr message = bus.message();
    const std::string unsendable = std::string("a\0b", 3);
};

TEST_F(Exceptions, BecomeTheErrorTextOfAVariantsWriter) {
    const Variant variant(unsendable);
    CodecResult<void> result;
    {
        const OutOfMemory scope;
        result = variant.writeValue(message.get());
    }
    EXPECT_EQ(errorOf(result), std::bad_alloc().what());
}

TEST_F(Exceptions, PassThroughTheWriterOfPlainTexts) {
    const OutOfMemory scope;
    EXPECT_THROW(static_cast<void>(write(message.get(), unsendable)), std::bad_alloc);
}

}  // namespace
}  // namespace kaz::dbus
