#include "base/replaceable_task.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace kaz::test {
namespace {

TEST(ReplaceableTask, WithoutAFunctionReturnsADefaultValue) {
    ReplaceableTask<std::optional<int>()> task;
    EXPECT_EQ(task(), std::nullopt);
    task.set(nullptr);
    EXPECT_EQ(task(), std::nullopt);
}

TEST(ReplaceableTask, PassesItsArgumentsAndItsResult) {
    ReplaceableTask<int(int, int)> task;
    task.set([](int minuend, int subtrahend) { return minuend - subtrahend; });
    EXPECT_EQ(task(5, 3), 2);
}

TEST(ReplaceableTask, KeepsAFunctionThatReplacesItselfAliveUntilItReturns) {
    ReplaceableTask<int()> task;
    std::weak_ptr<int> alive;
    task.set([&task, &alive, value = std::make_shared<int>(1)] {
        alive = value;
        task.set([] { return 2; });
        return *value;
    });
    EXPECT_EQ(task(), 1);
    EXPECT_TRUE(alive.expired()) << "the replaced function is destroyed when its run ends";
    EXPECT_EQ(task(), 2);
}

}  // namespace
}  // namespace kaz::test
