#include "base/wipe.h"
#include "support/freed_memory_watch/freed_memory_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kaz::test {
namespace {

// A short string lies inside its object, a long one on the heap.
const std::vector<std::string>& secrets() {
    static const std::vector<std::string> all{"hunter2hunter2", std::string(63, 'x') + "correct horse",
                                              std::string("with\0a NUL", 10)};
    return all;
}

bool isAllZero(const std::string& text) {
    const char* const memory = text.data();
    return std::all_of(memory, memory + text.capacity(), [](char byte) { return byte == '\0'; });
}

TEST(Wipe, OverwritesTheTextInPlaceAndEmptiesTheString) {
    for (std::string secret : secrets()) {
        const char* const memory = secret.data();
        wipe(secret);
        EXPECT_TRUE(secret.empty());
        EXPECT_EQ(secret.data(), memory) << "another place would leave the text where it was";
        EXPECT_TRUE(isAllZero(secret));
    }
}

TEST(Wipe, OverwritesUnusedCapacityToo) {
    for (std::string secret : secrets()) {
        secret.resize(1);
        wipe(secret);
        EXPECT_TRUE(isAllZero(secret));
    }
}

TEST(Wipe, LeavesAnEmptyStringEmptyAndUsable) {
    std::string text;
    wipe(text);
    EXPECT_TRUE(text.empty());
    text = "usable";
    wipe(text);
    text += "again";
    EXPECT_EQ(text, "again");
}

static_assert(noexcept(wipe(std::declval<std::string&>())));
static_assert(std::is_nothrow_move_constructible_v<WipedString>);
static_assert(!std::is_copy_assignable_v<WipedString> && !std::is_move_assignable_v<WipedString>,
              "what is overwritten by an assignment would have to be wiped first");

TEST(WipedString, HoldsTheTextAndWipesWhatItWasTakenFrom) {
    for (std::string secret : secrets()) {
        const std::string copy = secret;
        const WipedString wiped(std::move(secret));
        EXPECT_EQ(wiped.get(), copy);
        EXPECT_TRUE(secret.empty());  // NOLINT(bugprone-use-after-move): that is the promise
        EXPECT_TRUE(isAllZero(secret));
    }
}

TEST(WipedString, LeavesNothingInItsMemoryAtItsEnd) {
    for (const std::string& secret : secrets()) {
        auto text = std::make_unique<WipedString>(std::string(secret));
        const FreedMemoryWatch watch(secret);
        text.reset();
        EXPECT_EQ(watch.leaks(), 0U) << secret.size();
    }
}

TEST(WipedString, LeavesNothingBehindWhenItIsMovedOrCopied) {
    for (const std::string& secret : secrets()) {
        auto text = std::make_unique<WipedString>(std::string(secret));
        auto copy = std::make_unique<WipedString>(*text);
        EXPECT_EQ(copy->get(), secret);
        EXPECT_EQ(text->get(), secret);
        auto moved = std::make_unique<WipedString>(std::move(*text));
        EXPECT_EQ(moved->get(), secret);
        EXPECT_TRUE(isAllZero(text->get()));
        const FreedMemoryWatch watch(secret);
        text.reset();
        copy.reset();
        moved.reset();
        EXPECT_EQ(watch.leaks(), 0U) << secret.size();
    }
}

TEST(FreedMemoryWatch, SeesASecretThatWasNotWiped) {
    for (const std::string& secret : secrets()) {
        auto text = std::make_unique<std::string>(secret);
        const FreedMemoryWatch watch(secret);
        text.reset();
        EXPECT_GE(watch.leaks(), 1U) << secret.size();
    }
}

}  // namespace
}  // namespace kaz::test
