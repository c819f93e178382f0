#include "communicator/supplicant_state.h"

#include "doubles/recording_log/recording_log.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace kaz::wifi {
namespace {

using Status = Communicator::SupplicantConnectionStatus;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SupplicantState, EachSupplicantStateMapsToAStatus) {
    const std::vector<std::pair<const char*, Status>> statusOfState{
        {"disconnected", Status::Disconnected},  {"inactive", Status::Disconnected},
        {"scanning", Status::Disconnected},      {"interface_disabled", Status::InterfaceDisabled},
        {"authenticating", Status::Connecting},  {"associating", Status::Connecting},
        {"associated", Status::Connecting},      {"4way_handshake", Status::Connecting},
        {"group_handshake", Status::Connecting}, {"completed", Status::Connected},
    };
    const test::RecordingLog log;
    for (const auto& [state, status] : statusOfState) {
        EXPECT_EQ(fromSupplicantState(state), status) << state;
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(SupplicantState, UnknownSupplicantStateMapsToNothingAndLogsOneWarning) {
    for (const std::string state :
         {"", "Completed", "completed ", "complete", "COMPLETED", "unknown", "4way"}) {
        const test::RecordingLog log;
        EXPECT_EQ(fromSupplicantState(state), std::nullopt) << state;
        EXPECT_THAT(log.records(),
                    ElementsAre(test::LogRecord{spdlog::level::warn,
                                                "wpa_supplicant in unknown state (\"" + state + "\")"}));
    }
}

}  // namespace
}  // namespace kaz::wifi
