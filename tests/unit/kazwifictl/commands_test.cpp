#include "kazwifictl/commands/commands.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "base/temporary_folder.h"
#include "kazwifictl/session/workspace.h"
#include "kazwifictl/text/failure.h"
#include "support/files/files.h"
#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using std::chrono::milliseconds;
using test::connectedTo;
using test::FakeWorld;
using test::network;
using wifi::ConnectionInfo;
using wifi::SecurityMode;
using Status = ConnectionInfo::Status;

const std::vector<FakeWorld::Step> success{{Status::connectingIP, "Home", -50},
                                           {Status::connected, "Home", -50}};
const std::vector<FakeWorld::Step> refusal{
    {Status::disconnected,
     "",
     0,
     {"Home", wifi::Stage::keyExchange, wifi::Cause::wrongKey, wifi::Certainty::probable, {}, {}}}};

// Runs each command as a process does that ends afterwards. The device is slow, so that a command which returns too
// early fails its test.
class CommandsTest : public testing::Test {
  protected:
    CommandsTest() {
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);  // the device is simulated
        ::setenv("KAZ_DEVICE_ROOT", folder.path().c_str(), 1);
        world.slowness = milliseconds(10);
        world.inRange = {network("Home", -50, SecurityMode::rsnPsk),
                         network("Cafe", -60, SecurityMode::none)};
        options.startWait = milliseconds(20000);
    }

    // Leaves the report in `report`.
    ExitCode run(Report (*command)(const Options&, Workspace&, Output&)) {
        Workspace place(Workspace::Kind::oneCommand, interrupts, options.startWait);
        try {
            report = command(options, place, output);
        } catch (const CommandFailed& failed) {
            report = {{}, Json::object(), failed.failure()};
        }
        return codeOf(report);
    }

    ExitCode connect(const std::string& ssid, const std::string& password = "correct horse") {
        options.command = Command::connect;
        options.ssid = ssid;
        options.connect.passwordFile = passwordFile(password);
        return run(connectTo);
    }

    ExitCode forget(const std::string& ssid) {
        options.ssid = ssid;
        return run(forgetNetwork);
    }

    // Blocks until the device has done this.
    void waitFor(const std::string& what) {
        std::unique_lock lock(world.mutex);
        world.changed.wait(
            lock, [&] { return std::find(world.done.begin(), world.done.end(), what) != world.done.end(); });
    }

    std::string passwordFile(const std::string& password) {
        test::writeFile(folder / "password", password + "\n");
        return folder / "password";
    }

    static ExitCode codeOf(const Report& report) {
        return report.failure ? report.failure->code : ExitCode::done;
    }

    const TemporaryFolder folder;
    std::thread user;
    Report report;
    FakeWorld world;
    Interrupts interrupts;
    Options options;
    Output output{ColourChoice::never, true};  // JSON only; the tests write no documents
};

TEST_F(CommandsTest, ListShowsTheNetworkInUseAndTheOthers) {
    world.connection = connectedTo("Home", -50);
    EXPECT_EQ(run(listNetworks), ExitCode::done);
    ASSERT_EQ(report.members.at("networks").size(), 2U);
    EXPECT_EQ(report.members.at("networks").at(0).at("ssid"), "Home");
    EXPECT_EQ(report.members.at("networks").at(0).at("status"), "connected");
    EXPECT_FALSE(world.did("scan"));
}

TEST_F(CommandsTest, ListLooksAroundWhenNothingIsKnown) {
    world.inRange.clear();
    EXPECT_EQ(run(listNetworks), ExitCode::done);
    EXPECT_TRUE(world.did("scan"));
}

TEST_F(CommandsTest, ListNamesOnlyWhatCanBeTyped) {
    world.inRange.push_back(network("\x1b[31m", -40, SecurityMode::none));
    options.namesOnly = true;
    EXPECT_EQ(run(listNetworks), ExitCode::done);
    EXPECT_EQ(report.text, "Home\nCafe\n");
}

TEST_F(CommandsTest, NoStackIsReportedWithItsReason) {
    world.running = false;
    options.startWait = milliseconds(400);
    EXPECT_EQ(run(listNetworks), ExitCode::noStack);
    EXPECT_NE(report.failure->why.find("wpa_supplicant"), std::string::npos);
    world.storedChoice = false;
    EXPECT_EQ(run(scanNetworks), ExitCode::noStack);
    EXPECT_EQ(report.failure->why, "Wi-Fi is switched off");
    EXPECT_EQ(report.failure->advice, "kazwifictl on");
}

TEST_F(CommandsTest, StatusIsNoFailureWhenWifiIsOffByChoice) {
    world.running = false;
    world.storedChoice = false;
    EXPECT_EQ(run(showStatus), ExitCode::done);
    EXPECT_EQ(report.text, "Wi-Fi               off\n");
    world.storedChoice = true;
    EXPECT_EQ(run(showStatus), ExitCode::noStack);
}

TEST_F(CommandsTest, ScanShowsWhatWasFoundHoweverLateTheResultsReachIt) {
    world.foundByScan = {network("Office", -70, SecurityMode::rsnPsk)};
    world.resultsReachNobody = true;
    options.namesOnly = true;
    EXPECT_EQ(run(scanNetworks), ExitCode::done);
    EXPECT_EQ(report.text, "Home\nCafe\nOffice\n");
}

TEST_F(CommandsTest, ConnectFindsWhatAScanFoundHoweverLateTheResultsReachIt) {
    world.foundByScan = {network("Office", -70, SecurityMode::rsnPsk)};
    world.resultsReachNobody = true;
    world.afterConnect["Office"] = {{Status::connectingIP, "Office", -70},
                                    {Status::connected, "Office", -70}};
    EXPECT_EQ(connect("Office"), ExitCode::done);
    EXPECT_TRUE(world.did("scan"));
    EXPECT_TRUE(world.did("connect Office"));
}

TEST_F(CommandsTest, ScanFailsWhenTheSupplicantDoesNotBegin) {
    world.scansBegin = false;
    EXPECT_EQ(run(scanNetworks), ExitCode::failed);
}

TEST_F(CommandsTest, ScanFailsWhenTheSupplicantStopsMeanwhile) {
    world.scansEnd = false;
    world.whenMade = [this](wifi::Manager& manager) {
        if (!user.joinable()) {
            user = std::thread([this, &manager] {
                waitFor("scan");
                manager.setEnabled(false);
            });
        }
    };
    EXPECT_EQ(run(scanNetworks), ExitCode::noStack);
    user.join();
    EXPECT_EQ(report.failure->why, "wpa_supplicant stopped during the command");
}

TEST_F(CommandsTest, ScanWaitsForTheScanThatRuns) {
    world.scansEnd = false;
    Workspace place(Workspace::Kind::prompt, interrupts, options.startWait);
    Session& session = place.act("", Workspace::Need::stack);
    session.manager().scan();
    session.until(Clock::now() + options.startWait, [](const Snapshot& view) { return view.scanning; });
    ::kill(::getpid(), SIGINT);  // which ends the wait
    EXPECT_THROW(scanNetworks(options, place, output), Interrupted);
    EXPECT_TRUE(session.carriedOut(options.startWait));
    const auto all = world.everything();
    EXPECT_EQ(std::count(all.begin(), all.end(), "scan"), 1);
}

TEST_F(CommandsTest, OffHasStoppedTheSupplicantWhenItReturns) {
    EXPECT_EQ(run(switchOff), ExitCode::done);
    EXPECT_TRUE(world.did("stop"));
    EXPECT_FALSE(world.storedChoice);
    EXPECT_EQ(report.members.at("changed"), true);
}

TEST_F(CommandsTest, OffAsksASupplicantToStopThatDoesNotRunYet) {
    world.running = false;
    EXPECT_EQ(run(switchOff), ExitCode::done);
    EXPECT_TRUE(world.did("stop"));
}

TEST_F(CommandsTest, OffTimesOutWhenTheSupplicantStays) {
    world.startsAndStops = false;
    options.startWait = milliseconds(400);
    EXPECT_EQ(run(switchOff), ExitCode::timedOut);
}

TEST_F(CommandsTest, OnHasStartedTheSupplicantWhenItReturns) {
    world.running = false;
    world.storedChoice = false;
    EXPECT_EQ(run(switchOn), ExitCode::done);
    EXPECT_TRUE(world.did("start"));
    EXPECT_TRUE(world.storedChoice);
}

TEST_F(CommandsTest, OnFailsWhenTheSupplicantDoesNotStart) {
    world.running = false;
    world.startsAndStops = false;
    options.startWait = milliseconds(400);
    EXPECT_EQ(run(switchOn), ExitCode::noStack);
}

TEST_F(CommandsTest, OnAndOffFailWhenTheChoiceCannotBeStored) {
    world.canStore = false;
    EXPECT_EQ(run(switchOff), ExitCode::failed);
    EXPECT_NE(report.failure->why.find("configuration file"), std::string::npos);
}

TEST_F(CommandsTest, ConnectIsSavedWhenItReturns) {
    world.afterConnect["Home"] = success;
    EXPECT_EQ(connect("Home"), ExitCode::done);
    EXPECT_EQ(report.members.at("outcome"), "connected");
    EXPECT_EQ(report.members.at("signal_dbm"), -50);
    EXPECT_EQ(report.members.at("stages").size(), 2U);
    EXPECT_EQ(world.password, "correct horse");
    EXPECT_TRUE(world.did("save"));
}

TEST_F(CommandsTest, ConnectUsesWhatIsSavedWhenNothingElseIsAskedFor) {
    world.saved = {"Home"};
    world.afterConnect["Home"] = success;
    options.ssid = "Home";
    EXPECT_EQ(run(connectTo), ExitCode::done);
    EXPECT_TRUE(world.did("select Home"));
    EXPECT_FALSE(world.did("connect Home"));
}

TEST_F(CommandsTest, ConnectLeavesNothingOfANewNetworkThatRefuses) {
    world.afterConnect["Home"] = refusal;
    EXPECT_EQ(connect("Home"), ExitCode::failed);
    EXPECT_EQ(report.members.at("outcome"), "refused");
    EXPECT_EQ(report.members.at("saved"), false);
    EXPECT_NE(report.failure->why.find("password"), std::string::npos);
    EXPECT_TRUE(world.did("forget Home"));
    EXPECT_EQ(world.everything().back(), "save");
}

TEST_F(CommandsTest, ConnectKeepsARefusedNetworkWhenAskedTo) {
    world.afterConnect["Home"] = refusal;
    options.connect.keep = true;
    EXPECT_EQ(connect("Home"), ExitCode::failed);
    EXPECT_EQ(report.members.at("saved"), true);
    EXPECT_FALSE(world.did("forget Home"));
    EXPECT_TRUE(world.did("save"));
}

TEST_F(CommandsTest, ConnectKeepsASavedNetworkThatRefuses) {
    world.saved = {"Home"};
    world.afterConnect["Home"] = refusal;
    options.ssid = "Home";
    EXPECT_EQ(run(connectTo), ExitCode::failed);
    EXPECT_FALSE(world.did("forget Home"));
}

TEST_F(CommandsTest, ConnectCallsAnAttemptOffWhenItsTimeIsUp) {
    options.connect.wait = milliseconds(100);
    EXPECT_EQ(connect("Home"), ExitCode::timedOut);
    EXPECT_TRUE(world.did("forget Home"));
    EXPECT_EQ(world.everything().back(), "save");
}

TEST_F(CommandsTest, ConnectKeepsALinkThatOnlyLacksAnAddress) {
    world.afterConnect["Home"] = {success.front()};
    world.connectsAtOnce = true;
    options.connect.wait = milliseconds(100);
    EXPECT_EQ(connect("Home"), ExitCode::timedOut);
    EXPECT_NE(report.failure->why.find("no address"), std::string::npos);
    EXPECT_FALSE(world.did("forget Home"));
    EXPECT_TRUE(world.did("save"));
}

TEST_F(CommandsTest, ConnectIsRefusedWithTheRuleThatWasBroken) {
    EXPECT_EQ(connect("Home", "short"), ExitCode::refused);
    EXPECT_EQ(report.failure->why, "the password is shorter than 8 bytes");
    EXPECT_FALSE(world.did("connect Home"));
    EXPECT_EQ(connect(std::string(33, 'x')), ExitCode::refused);
    EXPECT_EQ(connect(""), ExitCode::refused);
    options.connect.security = SecurityMode::unsupported;
    EXPECT_EQ(connect("Home"), ExitCode::refused);
}

TEST_F(CommandsTest, ConnectSaysWhichEapMethodsThereAre) {
    options.connect.security = SecurityMode::enterprise;
    options.connect.identity = "me";
    options.connect.eapMethod = "MD5";
    EXPECT_EQ(connect("Home"), ExitCode::refused);
    EXPECT_EQ(report.failure->advice, "--eap with one of PEAP, TTLS");
}

TEST_F(CommandsTest, ConnectDoesNotFindWhatIsNeitherInRangeNorSaved) {
    world.afterConnect["Elsewhere"] = refusal;
    options.ssid = "Elsewhere";
    world.connection = connectedTo("Home", -50);
    world.afterConnect["Elsewhere"] = {
        {Status::connected, "Home", -50}};  // the library returns to the former connection
    EXPECT_EQ(run(connectTo), ExitCode::notFound);
    EXPECT_TRUE(world.did("scan"));
}

TEST_F(CommandsTest, ConnectDoesNothingWhenItIsThereAlready) {
    world.connection = connectedTo("Home", -50);
    options.ssid = "Home";
    EXPECT_EQ(run(connectTo), ExitCode::done);
    EXPECT_EQ(report.members.at("outcome"), "already-connected");
    EXPECT_TRUE(world.everything().empty());
}

// Also when the user does not wait for the end of the attempt and interrupts it again.
TEST_F(CommandsTest, ConnectInterruptedLeavesNothingHalfDone) {
    options.ssid = "Home";
    options.connect.passwordFile = passwordFile("correct horse");
    for (const std::vector<int>& signals : {std::vector{SIGINT}, std::vector{SIGINT, SIGTERM}}) {
        world.done.clear();
        std::optional<Workspace> place(std::in_place, Workspace::Kind::oneCommand, interrupts,
                                       options.startWait);
        user = std::thread([&] {
            waitFor("connect Home");
            for (const int signal : signals) {
                ::kill(::getpid(), signal);
            }
        });
        EXPECT_THROW(connectTo(options, *place, output), Interrupted);
        user.join();
        static_cast<void>(interrupts.take());  // the second signal, if it came too late
        place.reset();
        EXPECT_TRUE(world.did("forget Home"));
        EXPECT_EQ(world.everything().back(), "save");
    }
}

TEST_F(CommandsTest, ConnectKeepsASavedNetworkWhoseTimeIsUp) {
    world.saved = {"Home"};
    options.ssid = "Home";
    options.connect.wait = milliseconds(100);
    EXPECT_EQ(run(connectTo), ExitCode::timedOut);
    EXPECT_TRUE(world.did("disconnect"));
    EXPECT_FALSE(world.did("forget Home"));
}

TEST_F(CommandsTest, ConnectAndForgetFailWhenTheSupplicantCannotSave) {
    world.afterConnect["Home"] = success;
    const auto forgetInVain = [this](const std::string& ssid) {
        world.saved = {ssid};
        world.canSave = false;
        EXPECT_EQ(forget(ssid), ExitCode::failed) << ssid;
        EXPECT_EQ(report.failure.value_or(Failure{}).why, "wpa_supplicant did not write its configuration");
        world.canSave = true;
    };
    forgetInVain("Far away");
    EXPECT_EQ(connect("Home"), ExitCode::done) << "what failed before does not count";
    forgetInVain("Cafe");
    world.saved = {"Cafe"};
    EXPECT_EQ(forget("Cafe"), ExitCode::done);
    world.canSave = false;
    EXPECT_EQ(connect("Home"), ExitCode::failed);
    EXPECT_EQ(report.failure.value_or(Failure{}).what, "\"Home\" is connected, but not saved");
    EXPECT_EQ(report.members.at("saved"), false);
}

TEST_F(CommandsTest, DisconnectHasHappenedWhenItReturns) {
    world.connection = connectedTo("Home", -50);
    EXPECT_EQ(run(disconnectFrom), ExitCode::done);
    EXPECT_EQ(report.members.at("ssid"), "Home");
    EXPECT_TRUE(world.did("disconnect"));
}

TEST_F(CommandsTest, DisconnectWithoutAConnectionChangesNothing) {
    EXPECT_EQ(run(disconnectFrom), ExitCode::done);
    EXPECT_EQ(report.members.at("changed"), false);
    EXPECT_FALSE(world.did("disconnect"));
}

TEST_F(CommandsTest, ForgetIsSavedWhenItReturnsWhereverTheNetworkIs) {
    world.saved = {"Home", "Cafe", "Far away"};
    world.connection = connectedTo("Home", -50);
    for (const std::string ssid : {"Cafe", "Far away", "Home"}) {
        world.done.clear();
        EXPECT_EQ(forget(ssid), ExitCode::done) << ssid;
        EXPECT_TRUE(world.did("forget " + ssid)) << ssid;
        EXPECT_EQ(world.everything().back(), "save") << ssid;
    }
}

TEST_F(CommandsTest, ForgetDoesNotFindANetworkThatIsListedAsNotSaved) {
    EXPECT_EQ(forget("Home"), ExitCode::notFound);
    EXPECT_FALSE(world.did("forget Home"));
}

TEST_F(CommandsTest, ForgetFailsWhenTheNetworkStays) {
    world.saved = {"Home"};
    world.removalFails = true;
    EXPECT_EQ(forget("Home"), ExitCode::failed);
}

TEST_F(CommandsTest, ForgetRefusesANameThatCannotBe) {
    EXPECT_EQ(forget(""), ExitCode::refused);
    EXPECT_EQ(forget(std::string(33, 'x')), ExitCode::refused);
}

TEST_F(CommandsTest, APromptKeepsOneDeviceForAllItsCommands) {
    int made = 0;
    // Waits for the first state. Without it, the prompt would make a second Manager, to ask for the supplicant or to
    // read the results of a scan.
    world.whenMade = [&](wifi::Manager& manager) {
        ++made;
        while (manager.networks().empty()) {
            std::this_thread::yield();
        }
    };
    world.saved = {"Home"};
    world.afterConnect["Home"] = success;
    Workspace place(Workspace::Kind::prompt, interrupts, options.startWait);
    options.ssid = "Home";
    EXPECT_EQ(codeOf(connectTo(options, place, output)), ExitCode::done);
    EXPECT_EQ(listNetworks(options, place, output).members.at("networks").at(0).at("status"), "connected");
    EXPECT_EQ(codeOf(disconnectFrom(options, place, output)), ExitCode::done);
    EXPECT_EQ(codeOf(forgetNetwork(options, place, output)), ExitCode::done);
    place.close();
    EXPECT_EQ(made, 1);
    EXPECT_TRUE(world.did("forget Home"));
}

TEST_F(CommandsTest, APromptFindsTheConnectionHoweverLateItIsPublished) {
    world.connection = connectedTo("Home", -50);
    world.whenAttached = [] { std::this_thread::sleep_for(std::chrono::milliseconds(300)); };
    options.ssid = "Far away";
    world.saved = {"Far away"};
    Workspace place(Workspace::Kind::prompt, interrupts, options.startWait);
    EXPECT_EQ(forgetNetwork(options, place, output).text, "Forgot \"Far away\".\n");
    EXPECT_TRUE(place.session().latest().isInUse("Home"));
    place.close();
}

TEST_F(CommandsTest, APromptHasCarriedOutARequestWhenItReturns) {
    world.saved = {"Far away"};
    world.connection = connectedTo("Home", -50);
    Workspace place(Workspace::Kind::prompt, interrupts, options.startWait);
    options.ssid = "Far away";
    EXPECT_EQ(forgetNetwork(options, place, output).text, "Forgot \"Far away\".\n");
    EXPECT_TRUE(world.did("forget Far away"));
    EXPECT_EQ(world.everything().back(), "save");
    place.close();
}

}  // namespace
}  // namespace kaz::ctl
