#include "bench/codec/counted_allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t count = 0;

}  // namespace

std::size_t kaz::bench::allocations() noexcept {
    return count;
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): this is where memory comes from

void* operator new(std::size_t size) {
    ++count;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

// NOLINTEND(cppcoreguidelines-no-malloc)
