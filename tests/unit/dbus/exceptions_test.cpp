// Memory runs out while an error is reported. This program's operator new fails on demand.
#include "base/non_copyable.h"

#include "dbus/variant.h"
#include "unit/dbus/codec_fixture.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool outOfMemory = false;

class OutOfMemory : kaz::NonCopyable {
  public:
    OutOfMemory() { outOfMemory = true; }
    ~OutOfMemory() { outOfMemory = false; }
};

}  // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): there is nothing else below operator new
// Not inlined, or the compiler sees memory of a new expression go to free().
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* memory = outOfMemory ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc)

namespace kaz::dbus {
namespace {

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
