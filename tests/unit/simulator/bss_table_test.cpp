#include "simulator/supplicant/bss_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

class BssTableTest : public ::testing::Test {
  protected:
    AccessPoint& add(const std::string& ssid, bool hidden = false) {
        AccessPoint accessPoint;
        accessPoint.ssid = ssid;
        accessPoint.bssid = around_.freeBssid();
        accessPoint.hidden = hidden;
        return around_.accessPoints.emplace_back(accessPoint);
    }

    void scan(const std::set<std::string>& askedFor = {}, const Bss* kept = nullptr) {
        events_.clear();
        table_.update(around_, askedFor, now_, kept);
        now_ += 1s;
    }

    Neighbourhood around_;
    std::chrono::milliseconds now_{100s};
    std::vector<std::string> events_;
    BssTable table_{
        {[this](const Bss& bss) { events_.push_back("added " + std::to_string(bss.id) + bss.ssid); },
         [this](const Bss& bss) { events_.push_back("changed " + std::to_string(bss.id)); },
         [this](unsigned id) { events_.push_back("removed " + std::to_string(id)); }}};
};

TEST_F(BssTableTest, TellsNewAndChangedAccessPointsOnly) {
    add("A");
    add("B");
    scan();
    EXPECT_THAT(events_, ElementsAre("added 0A", "added 1B"));
    around_.accessPoints.front().signal = -80;
    scan();
    EXPECT_THAT(events_, ElementsAre("changed 0"));
    scan();
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(BssTableTest, ForgetsWhatTwoScansHaveMissed) {
    add("A");
    scan();
    around_.accessPoints.clear();
    scan();
    EXPECT_THAT(events_, IsEmpty());
    scan();
    EXPECT_THAT(events_, ElementsAre("removed 0"));
}

TEST_F(BssTableTest, NeverUsesAnIdTwice) {
    add("A");
    scan();
    around_.accessPoints.clear();
    scan();
    scan();
    add("B");
    scan();
    EXPECT_THAT(events_, ElementsAre("added 1B"));
}

TEST_F(BssTableTest, KeepsTheBssThatIsInUse) {
    add("A");
    scan();
    const Bss* const used = table_.all().front().get();
    around_.accessPoints.clear();
    for (int i = 0; i < 4; ++i) {
        scan({}, used);
    }
    EXPECT_EQ(table_.find(0), used);
}

TEST_F(BssTableTest, HearsTheSsidOfAHiddenOneOnlyWhenItIsAskedFor) {
    add("Secret", true);
    scan();
    EXPECT_THAT(events_, ElementsAre("added 0"));
    scan({"Other"});
    EXPECT_THAT(events_, IsEmpty());
    scan({"Secret"});
    EXPECT_THAT(events_, ElementsAre("added 1Secret"));
}

TEST_F(BssTableTest, FlushesByAge) {
    add("A");
    scan();
    add("B");
    now_ += 10s;
    around_.accessPoints.erase(around_.accessPoints.begin());
    scan();
    events_.clear();
    table_.flush(5s, now_, nullptr);
    EXPECT_THAT(events_, ElementsAre("removed 0"));
    table_.flush(0s, now_, nullptr);
    EXPECT_THAT(events_, ElementsAre("removed 0", "removed 1"));
}

}  // namespace
}  // namespace kaz::sim::test
