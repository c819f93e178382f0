// More requests than may wait, while the device replies slowly.
#include "integration/endurance/resources.h"
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

class Flood : public DeviceFixture {
  protected:
    static constexpr std::size_t bound = 4096;
    static constexpr std::size_t slowScans = 16;
    // The requests that may wait behind the scans. Each scan that ends makes room for one more.
    static constexpr std::size_t room = bound - (slowScans - 1);
    static constexpr const char* startOfRecord = "Connecting to configured network ssid=\"";

    // Blocks the loop in a slow scan, and in further ones in case the test is slow too.
    void blockTheLoop() {
        device().orderFault({.peer = "supplicant",
                             .member = "Scan",
                             .kind = sim::FaultKind::delay,
                             .delay = milliseconds(3000)});
        manager().scan();
        ASSERT_TRUE(waitForCall("Scan"));
        for (std::size_t i = 1; i < slowScans; ++i) {
            manager().scan();
        }
    }

    // Makes requests. Returns the unknown networks among them, by which the log distinguishes requests.
    std::vector<std::string> request(std::size_t count) {
        std::vector<std::string> named;
        for (std::size_t i = 0; i < count; ++i) {
            if (i % 64 == 0) {
                manager().setEnabled(true);
            } else if (i % 16 == 1) {
                EXPECT_EQ(connectHome(), ConnectResult::ok);
            } else if (i % 16 == 2) {
                manager().scan();
            } else {
                named.push_back("Unknown " + std::to_string(i));
                manager().connectConfigured(named.back());
            }
        }
        return named;
    }

    ConnectResult connectHome() { return manager().connect(home()); }

    static std::string recordOf(const std::string& name) { return startOfRecord + name + '"'; }

    // The records of the named requests that have run.
    std::vector<std::string> dealtWith() const {
        std::vector<std::string> records = log().texts(spdlog::level::debug);
        std::erase_if(records, [](const std::string& text) { return text.find(startOfRecord) != 0; });
        return records;
    }

    // In parts, because together they take long on a busy machine.
    bool waitUntilDealtWith(const std::vector<std::string>& names) const {
        constexpr std::size_t part = 256;
        std::size_t seen = 0;
        for (std::size_t end = 0; end < names.size();) {
            end = std::min(end + part, names.size());
            const bool dealtWith =
                log().waitFor([record = recordOf(names[end - 1]), &seen](const auto& records) {
                    while (seen < records.size() && records[seen].text != record) {
                        ++seen;
                    }
                    return seen < records.size();
                });
            if (!dealtWith) {
                return false;
            }
        }
        return true;
    }

    std::ptrdiff_t warnings() const {
        const auto texts = log().texts(spdlog::level::warn);
        return std::count(texts.begin(), texts.end(),
                          "4096 tasks are waiting, dropping what is added until some have run");
    }
};

TEST_F(Flood, RequestsBeyondTheBoundAreDroppedWithOneWarningAndTheNextOnesWork) {
    start();
    blockTheLoop();
    const std::vector<std::string> accepted = request(room);
    EXPECT_EQ(warnings(), 0);
    request(room);
    manager().setEnabled(false);
    EXPECT_EQ(warnings(), 1);

    // Dropped requests take no memory.
    const std::size_t bytes = allocatedBytes();
    for (int i = 0; i < 50'000; ++i) {
        EXPECT_EQ(connectHome(), ConnectResult::ok);
    }
    EXPECT_LE(allocatedBytes(), bytes + 100'000);

    device().clearFaults();
    ASSERT_TRUE(waitUntilDealtWith(accepted));
    EXPECT_EQ(warnings(), 1);
    manager().setEnabled(false);
    ASSERT_TRUE(user().waitForStack(false));
    manager().setEnabled(true);
    ASSERT_TRUE(user().waitForStack(true));
    ASSERT_NO_FATAL_FAILURE(connect(cafe()));

    // Only the requests below the bound have run, in order.
    const std::vector<std::string> records = dealtWith();
    ASSERT_GE(records.size(), accepted.size());
    EXPECT_LT(records.size(), accepted.size() + slowScans);
    for (std::size_t i = 0; i < accepted.size(); ++i) {
        ASSERT_EQ(records[i], recordOf(accepted[i]));
    }
}

}  // namespace
}  // namespace kaz::test
