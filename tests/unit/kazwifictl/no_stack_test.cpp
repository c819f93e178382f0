#include "kazwifictl/session/no_stack.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kaz::ctl {
namespace {

using wifi::FailureReason;
using Place = wifi::StackTrouble::Place;

Snapshot with(Place place, FailureReason reason = FailureReason::none, bool enabled = true) {
    Snapshot snapshot;
    snapshot.enabled = enabled;
    snapshot.connection.stack = {place, reason};
    return snapshot;
}

TEST(NoStack, NamesWhatStandsInTheWay) {
    struct Row {
        Snapshot snapshot;
        std::string why;
        bool unknown;
    };
    const std::vector<Row> table{
        {with(Place::bus, FailureReason::noBus), "the system bus cannot be reached", true},
        {with(Place::systemd, FailureReason::denied),
         "systemd does not tell this user whether wpa_supplicant runs", true},
        {with(Place::systemd, FailureReason::denied, false),
         "systemd does not tell this user whether wpa_supplicant runs", true},
        {with(Place::systemd, FailureReason::unitMissing), "the unit wpa_supplicant.service does not exist",
         true},
        {with(Place::systemd, FailureReason::noAnswer), "systemd does not answer on the system bus", true},
        {with(Place::systemd, FailureReason::notOnBus), "systemd is not on the system bus", true},
        {with(Place::none, FailureReason::none, false), "Wi-Fi is switched off", false},
        {with(Place::supplicant, FailureReason::denied),
         "the policy of the system bus does not let this user talk to wpa_supplicant", false},
        {with(Place::supplicant, FailureReason::notOnBus),
         "wpa_supplicant runs, but is not on the system bus", false},
        {with(Place::supplicant, FailureReason::noAnswer), "wpa_supplicant does not answer", false},
        {with(Place::interface), "wpa_supplicant has no Wi-Fi interface", false},
    };
    for (const auto& [snapshot, why, unknown] : table) {
        EXPECT_EQ(stackTrouble(snapshot).why, why);
        EXPECT_EQ(isUnknown(snapshot), unknown) << why;
    }
}

TEST(NoStack, NothingIsUnknownOfASupplicantThatRuns) {
    Snapshot running = with(Place::systemd, FailureReason::noAnswer);
    running.running = true;
    EXPECT_FALSE(isUnknown(running));
}

TEST(NoStack, NamesWhySystemdDidNotStartTheUnit) {
    const std::vector<std::pair<FailureReason, std::string>> table{
        {FailureReason::noBus, "the system bus cannot be reached"},
        {FailureReason::unitMissing, "the unit wpa_supplicant.service does not exist"},
        {FailureReason::unitMasked, "the unit wpa_supplicant.service is masked"},
        {FailureReason::denied, "systemd does not let this user start or stop wpa_supplicant"},
        {FailureReason::notOnBus, "systemd is not on the system bus"},
        {FailureReason::noAnswer, "systemd does not answer on the system bus"},
        {FailureReason::refused, "systemd refused it"},
        {FailureReason::unknown, "systemd refused it"},
    };
    for (const auto& [reason, why] : table) {
        EXPECT_EQ(unitTrouble(reason).why, why);
    }
}

}  // namespace
}  // namespace kaz::ctl
