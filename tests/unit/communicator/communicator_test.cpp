// The contract of Communicator.
#include "communicator/communicator.h"

#include "communicator/configured_network.h"
#include "communicator/dbus_communicator.h"
#include "support/printed_values/printed_reports.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <type_traits>

namespace kaz::wifi {
namespace {

using Change = Communicator::PropertyChange;
using Report = Communicator::SupplicantInterfaceProperties;
using Status = Communicator::SupplicantConnectionStatus;

static_assert(Communicator::NoSignaldBm == -100);
static_assert(std::is_same_v<decltype(Communicator::NoSignaldBm), const std::int16_t>);

static_assert(std::is_same_v<std::underlying_type_t<Status>, std::int32_t>);
static_assert(static_cast<int>(Status::InterfaceDisabled) == 1);
static_assert(static_cast<int>(Status::Disconnected) == 2);
static_assert(static_cast<int>(Status::Connecting) == 3);
static_assert(static_cast<int>(Status::Connected) == 4);

static_assert(std::is_same_v<std::underlying_type_t<Change>, std::int32_t>);
static_assert(static_cast<int>(Change::Unchanged) == 0);
static_assert(static_cast<int>(Change::Set) == 1);
static_assert(static_cast<int>(Change::Cleared) == 2);

TEST(CommunicatorHandlers, DefaultHandlersIgnoreReports) {
    const auto communicator = createCommunicator();
    communicator->wifiServiceStatusChangeHandler();
    communicator->scanningDoneHandler(true);
    communicator->networkSelectedHandler("Home");
    communicator->networkSelectedHandler(std::nullopt);
    communicator->supplicantPropertiesHandler(Report{});
}

TEST(CommunicatorHandlers, OnlineHandlerHasNoDefaultAndThrows) {
    const auto communicator = createCommunicator();
    EXPECT_FALSE(communicator->networkdOnlineHandler);
    DbusCommunicator unassigned;
    EXPECT_THROW(unassigned.onlineState().report({"online"}), std::bad_function_call);
    EXPECT_THROW(unassigned.onlineState().report({"offline"}), std::bad_function_call);
    EXPECT_NO_THROW(unassigned.onlineState().report({}));
}

TEST(CommunicatorCalls, EndAfterTenSeconds) {
    dbus::Bus bus;
    EXPECT_EQ(SupplicantInterface(bus).callLimit(), std::chrono::seconds(10));
}

TEST(CommunicatorReport, NewReportReportsNothing) {
    const Report report;
    EXPECT_EQ(reportText(report), "nothing");
    EXPECT_EQ(report.currentBss.securityMode, SecurityMode::none);
}

TEST(CommunicatorNetwork, HandlesOnTheSamePathHaveTheSameIdWithAnySsid) {
    DbusCommunicator owner;
    ConfiguredNetwork known(owner.configuredNetworks(), "/networks/0", "Home");
    ConfiguredNetwork renamed(owner.configuredNetworks(), "/networks/0", "Office");
    ConfiguredNetwork unknown(owner.configuredNetworks(), "/networks/0", std::nullopt);
    ConfiguredNetwork other(owner.configuredNetworks(), "/networks/1", "Home");
    EXPECT_EQ(known.id(), renamed.id());
    EXPECT_EQ(known.id(), unknown.id());
    EXPECT_NE(known.id(), other.id());
    EXPECT_EQ(known.id(), std::hash<std::string>{}("/networks/0"));
    EXPECT_EQ(known.getSsid(), "Home");
    EXPECT_EQ(unknown.getSsid(), std::nullopt);
}

TEST(CommunicatorNetwork, HandleKeepsAnSsidOfAnyBytes) {
    DbusCommunicator owner;
    const std::string bytes("\0\xff\"", 3);
    ConfiguredNetwork network(owner.configuredNetworks(), "/networks/0", bytes);
    EXPECT_EQ(network.getSsid(), bytes);
}

TEST(CommunicatorStart, NewCommunicatorIsDetached) {
    EXPECT_FALSE(createCommunicator()->isSupplicantOn());
}

}  // namespace
}  // namespace kaz::wifi
