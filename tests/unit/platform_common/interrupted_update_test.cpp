// A writer that is killed before and after each of its system calls.
#include "unit/platform_common/config_fixture.h"
#include "unit/platform_common/stepped_process.h"

namespace kaz::test {
namespace {

class ConfigInterrupted : public ConfigFixture {
  protected:
    // Kills an update after this number of steps. Returns false if it ended before.
    static bool updateAndKillAfter(int steps) {
        SteppedProcess writer([] { return util::updateKazConfig("wifi", "off"); });
        for (int step = 0; step < steps; ++step) {
            if (!writer.step()) {
                return false;
            }
        }
        return true;
    }
};

TEST_F(ConfigInterrupted, LeavesTheOldFileOrTheNewOneAtEveryStep) {
    const std::string before = "# a comment\nvolume=7\nwifi=on\nname=x\n";
    const std::string after = "# a comment\nvolume=7\nwifi=off\nname=x\n";
    int steps = 0;
    int oldFiles = 0;
    int newFiles = 0;
    for (bool killed = true; killed && !HasFailure(); ++steps) {
        SCOPED_TRACE(steps);
        write(before);
        killed = updateAndKillAfter(steps);
        const std::string left = text();
        EXPECT_TRUE(left == before || left == after) << left;
        (left == before ? oldFiles : newFiles)++;
        // Its remains do not disturb the next writer.
        EXPECT_TRUE(util::updateKazConfig("volume", "8"));
        EXPECT_EQ(util::readKazConfig().at("volume"), "8");
        EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
    }
    // The writer was really stepped through, and the change became visible at one of the steps.
    EXPECT_GT(steps, 20);
    EXPECT_GT(oldFiles, 10);
    EXPECT_GT(newFiles, 1);
}

TEST_F(ConfigInterrupted, CreatesTheFileWholeOrNotAtAll) {
    for (int steps = 0;; ++steps) {
        SCOPED_TRACE(steps);
        std::filesystem::remove(file());
        const bool killed = updateAndKillAfter(steps);
        const bool created = std::filesystem::exists(file());
        EXPECT_TRUE(!created || text() == "wifi=off\n") << text();
        if (!killed || HasFailure()) {
            EXPECT_TRUE(created);
            break;
        }
    }
}

}  // namespace
}  // namespace kaz::test
