// Each single allocation fails in turn.
#include <map>

#include "unit/platform_common/config_fixture.h"
#include "unit/platform_common/failing_memory.h"

namespace kaz::test {
namespace {

using Entries = std::map<std::string, std::string>;

const std::string someoneElses(100, 'x');
const std::string before = "other=" + someoneElses + "\nwifi=on\n";
const std::string after = "other=" + someoneElses + "\nwifi=off\n";

class ConfigMemory : public ConfigFixture {
  protected:
    // Runs an operation repeatedly. The first allocation fails, then the second, until there are no more.
    template <typename Operation, typename Check>
    void failEachAllocation(const Operation& operation, const Check& check) {
        bool failed = true;
        int number = 0;
        while (failed && !HasFailure()) {
            SCOPED_TRACE(++number);
            write(before);
            log().clear();
            const auto result = [&] {
                const FailingMemory memory(number);
                auto outcome = operation();
                failed = memory.hasFailed();
                return outcome;
            }();
            check(result, failed);
            EXPECT_EQ(log().records().size(), failed ? 1U : 0U);
            EXPECT_FALSE(log().contains(someoneElses));
        }
        EXPECT_GT(number, 4) << "the allocations of the library were to fail";
    }
};

TEST_F(ConfigMemory, AnUpdateThatRunsOutOfItChangesNothing) {
    const std::string key = "wifi";
    const std::string value = "off";
    failEachAllocation([&] { return util::updateKazConfig(key, value); },
                       [&](bool updated, bool failed) {
                           EXPECT_EQ(updated, !failed);
                           EXPECT_EQ(text(), failed ? before : after);
                       });
}

TEST_F(ConfigMemory, AReaderThatRunsOutOfItGetsNoHalfConfiguration) {
    const Entries whole{{"other", someoneElses}, {"wifi", "on"}};
    failEachAllocation(
        [] { return util::readKazConfig(); },
        [&](const Entries& entries, bool failed) { EXPECT_EQ(entries, failed ? Entries{} : whole); });
}

}  // namespace
}  // namespace kaz::test
