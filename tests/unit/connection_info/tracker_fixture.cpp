#include "unit/connection_info/tracker_fixture.h"

#include <fmt/format.h>

#include <ostream>

namespace kaz::test {

std::string describe(const ConnectionInfo& info) {
    using ::testing::PrintToString;
    std::string text = fmt::format("{} '{}' {}", PrintToString(info.status), info.ssid, info.signal);
    const bool neverDisconnected = info.disconnectReason == ConnectionInfo::DisconnectReason::unknown &&
                                   info.disconnectSsid.empty() &&
                                   info.disconnectTime == FakeClock::TimePoint();
    if (!neverDisconnected) {
        const std::chrono::duration<double, std::milli> time = info.disconnectTime - FakeClock::usualStart;
        text += fmt::format(", {} '{}' @ {:.10g} ms", PrintToString(info.disconnectReason),
                            info.disconnectSsid, time.count());
    }
    return text;
}

void PrintTo(const TrackerEvent& event, std::ostream* out) {
    wifi::printName(event.kind,
                    {"connect", "disconnect", "forget", "select", "select -", "scanning", "bss", "bss -",
                     "status", "signal", "online", "supplicant comes", "supplicant goes", "wait", "look"},
                    out);
    *out << " (ssid " << ::testing::PrintToString(event.ssid) << ", dBm " << event.dBm << ", flag "
         << event.flag << ", status " << ::testing::PrintToString(event.status) << ", duration "
         << event.duration.count() << " ns)";
}

void TrackerTest::happen(const Events& events) {
    for (const TrackerEvent& event : events) {
        clock->advance(event.duration);
        tell(tracker, event);
    }
}

void PrintTo(const TrackerCase& row, std::ostream* out) {
    *out << row.name;
}

TEST_P(Tracker, Publishes) {
    happen(GetParam().events);
    EXPECT_EQ(published(), GetParam().published);
    EXPECT_EQ(timeLeft(), GetParam().timeLeft);
    const auto& logged = GetParam().logged;
    EXPECT_EQ(log.records(), logged ? RecordingLog::Records{*logged} : RecordingLog::Records{});
}

}  // namespace kaz::test
