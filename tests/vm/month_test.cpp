// Thirty days of ordinary use. The guest's clock skips idle time, so a day takes as long as the work in it.
#include "support/waiting/waiting.h"
#include "vm/access_point.h"
#include "vm/chaos_oracle.h"
#include "vm/command.h"
#include "vm/device.h"
#include "vm/file_writes.h"
#include "vm/month_figures.h"
#include "vm/neighbourhood.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kaz::vm {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr seconds comparisonLimit{70};  // the signal is polled every 60 s
const wifi::ConnectionSettings& homeNetwork = wpa2Network;

void sleepFor(Clock::duration duration) {
    std::this_thread::sleep_for(duration);
}

class Month : public DeviceTest {
  protected:
    struct Event {
        minutes time;  // of the day
        const char* name;
        void (Month::*happens)();
    };

    void SetUp() override {
        DeviceTest::SetUp();
        // Each wake-up is work for the guest: each beacon, and what its kernel does twice a second.
        run("systemctl stop 'ap@*' 'dhcp@*'");
        run("sysctl vm.compaction_proactiveness=0 vm.stat_interval=3600 "
            "net.ipv4.neigh.default.interval_probe_time_ms=86400000 "
            "net.ipv6.neigh.default.interval_probe_time_ms=86400000");
        for (AccessPoint* const used : {&home_, &other_, &visitor_}) {
            used->reconfigure("beacon_int=5000");
        }
        other_.vanish();
        visitor_.vanish();
        writes_.attributeTo(nameOfStart);
        ++times_[nameOfStart];
        ASSERT_TRUE(device().connects(homeNetwork));
        sleepFor(minutes(1));
        before_ = figuresSinceStart();
    }

    static std::size_t daysToPlay() {
        const char* const days = std::getenv("KAZ_MONTH_DAYS");
        return days == nullptr || *days == '\0' ? 30 : std::stoul(days);
    }

    void playDay(std::size_t day) {
        const auto start = Clock::now();
        for (const Event& event : eventsOf(day)) {
            std::this_thread::sleep_until(start + event.time);
            SCOPED_TRACE(event.name);
            writes_.attributeTo(event.name);
            ++times_[event.name];
            (this->*event.happens)();
            if (HasFatalFailure()) {
                return;
            }
            sleepFor(seconds(10));
            writes_.attributeTo(nothing);
        }
        std::this_thread::sleep_until(start + hours(24));
        expectConnected();
        expectTruth();
        expectIdleLoop();
        ASSERT_EQ(writes_.byCause().count(nothing), 0U) << "a file was written without a cause";
        days_.push_back(figuresOfDay());
    }

    void report() const {
        std::printf("%s", lineOfDay(days_.size(), days_.back()).c_str());
        std::fflush(stdout);
        {
            std::ofstream file("/run/results/month.txt");
            file << tableOfDays(days_) << '\n' << tableOfCauses(times_, writes_.byCause()) << '\n';
            for (std::size_t day = 0; day < days_.size(); ++day) {
                file << lineOfDay(day + 1, days_[day]);
            }
        }
        run("cp /run/results/month.txt /run/vm/results/");  // for a month that is stopped
    }

    const Days& days() const { return days_; }

  private:
    static constexpr const char* nameOfStart = "the first connection";
    static constexpr const char* nothing = "nothing happens";
    static constexpr std::size_t daysOfWeek = 7;

    static std::vector<Event> eventsOf(std::size_t day) {
        std::vector<Event> events = {
            {hours(3), "the access point reboots", &Month::accessPointReboots},
            {hours(7), "the user opens the menu", &Month::userOpensMenu},
            {hours(8), "Wi-Fi is switched off and on", &Month::userSwitchesOffAndOn},
            {hours(10), "a visitor brings a network", &Month::visitorBringsNetwork},
            {hours(12), "Wi-Fi is switched off and on", &Month::userSwitchesOffAndOn},
            {hours(13), "the user opens the menu", &Month::userOpensMenu},
            {hours(20), "Wi-Fi is switched off and on", &Month::userSwitchesOffAndOn},
            {hours(22), "the user opens the menu", &Month::userOpensMenu},
        };
        static const std::array<std::vector<Event>, daysOfWeek> onWeekdays{{
            {{hours(15), "the access point changes its channel", &Month::accessPointChangesChannel},
             {hours(18), "a visitor brings a network", &Month::visitorBringsNetwork}},
            {{hours(15), "the lease of the address runs out", &Month::leaseRunsOut},
             {hours(21), "Wi-Fi is switched off and on", &Month::userSwitchesOffAndOn}},
            {{hours(15), "the access point has another key for an hour", &Month::keyChangesForAnHour}},
            {{hours(15), "the user visits another network", &Month::userVisitsOtherNetwork},
             {hours(18), "a visitor brings a network", &Month::visitorBringsNetwork}},
            {{hours(15), "a visitor joins the access point", &Month::visitorJoins},
             {hours(21), "Wi-Fi is switched off and on", &Month::userSwitchesOffAndOn}},
            {{hours(15), "the access point has no power for an hour", &Month::accessPointHasNoPower},
             {hours(18), "a visitor brings a network", &Month::visitorBringsNetwork}},
            {{hours(21), "Wi-Fi is switched on again", &Month::userSwitchesOnAgain}},
        }};
        const std::vector<Event>& more = onWeekdays[day % daysOfWeek];
        events.insert(events.end(), more.begin(), more.end());
        std::stable_sort(events.begin(), events.end(),
                         [](const Event& a, const Event& b) { return a.time < b.time; });
        return events;
    }

    // What happens

    void accessPointReboots() {
        home_.vanish();
        ASSERT_TRUE(device().reaches(Status::disconnected));
        sleepFor(minutes(1));
        home_.comeBack();
        expectConnected();
    }

    void accessPointHasNoPower() {
        home_.vanish();
        ASSERT_TRUE(device().reaches(Status::disconnected));
        sleepFor(hours(1));
        expectTruth();
        home_.comeBack();
        expectConnected();
    }

    void accessPointChangesChannel() {
        home_.switchChannel(7);
        sleepFor(minutes(1));
        ASSERT_NE(run("ip netns exec wpa2 iw dev wpa2 info").find("2442 MHz"), std::string::npos);
        expectConnected();
        expectTruth();
    }

    void keyChangesForAnHour() {
        home_.reconfigure("wpa_passphrase=another-secret");
        ASSERT_TRUE(
            device().eventually([this] { return manager().connectionInfo().status < Status::connectingIP; }));
        sleepFor(hours(1));
        ASSERT_LT(manager().connectionInfo().status, Status::connectingIP);
        home_.reconfigure("wpa_passphrase=" + homeNetwork.password);
        // After many failures the supplicant waits for five minutes before it tries again.
        ASSERT_TRUE(device().reaches(Status::connected, homeNetwork.ssid, minutes(10)));
    }

    void leaseRunsOut() {
        run("systemctl stop dhcp@wpa2");
        sleepFor(hours(1));  // how long a lease lasts
        ASSERT_TRUE(device().reaches(Status::connectingIP, homeNetwork.ssid));
        expectTruth();
        run("systemctl start dhcp@wpa2");
        ASSERT_TRUE(device().reaches(Status::connected, homeNetwork.ssid, minutes(10)));
    }

    void visitorBringsNetwork() {
        const std::string ssid = "Visitor " + std::to_string(++visitors_);
        visitor_.reconfigure("ssid=" + ssid);
        userOpensMenu();
        ASSERT_TRUE(device().eventually([&] { return lists(ssid); })) << ssid;
        sleepFor(hours(1));
        visitor_.vanish();
        sleepFor(minutes(5));
        userOpensMenu();
        ASSERT_TRUE(device().eventually([&] { return !lists(ssid); })) << ssid;
    }

    // Another station, on a radio that is not in use.
    void visitorJoins() {
        run("printf 'network={\\nssid=\"%s\"\\npsk=\"%s\"\\n}\\n' '" + homeNetwork.ssid + "' '" +
            homeNetwork.password +
            "' >/run/visitor.conf && ip netns exec twin1 wpa_supplicant -B -P /run/visitor.pid -Dnl80211 "
            "-itwin1 -c/run/visitor.conf");
        ASSERT_TRUE(device().eventually([] { return stationsAtHome() == 2; }));
        sleepFor(hours(1));
        run("kill $(cat /run/visitor.pid)");
        ASSERT_TRUE(device().eventually([] { return stationsAtHome() == 1; }));
        expectConnected();
    }

    void userOpensMenu() {
        const int before = device().scanningChanges();
        manager().scan();
        ASSERT_TRUE(device().eventually(
            [&] { return device().scanningChanges() >= before + 2 && !manager().isScanning(); }));
    }

    void userSwitchesOffAndOn() {
        manager().setEnabled(false);
        ASSERT_TRUE(device().detaches());
        ASSERT_TRUE(device().reaches(Status::disconnected));
        sleepFor(minutes(1));
        manager().setEnabled(true);
        ASSERT_TRUE(device().attaches());
        expectConnected();
    }

    void userSwitchesOnAgain() {
        manager().setEnabled(true);
        sleepFor(minutes(1));
        expectConnected();
    }

    void userVisitsOtherNetwork() {
        other_.comeBack();
        ASSERT_TRUE(device().connects(openNetwork));
        sleepFor(hours(1));
        manager().connectConfigured(homeNetwork.ssid);
        expectConnected();
        sleepFor(minutes(1));
        manager().forgetNetwork(openNetwork.ssid);
        other_.vanish();
        sleepFor(minutes(1));
        expectConnected();
    }

    // What must hold

    void expectConnected() {
        ASSERT_TRUE(device().reaches(Status::connected, homeNetwork.ssid))
            << ::testing::PrintToString(manager().connectionInfo());
    }

    void expectTruth() {
        const auto end = Clock::now() + comparisonLimit;
        Picture truth = saidByDaemons();
        Picture said = saidBy(manager());
        while (said != truth && Clock::now() < end) {
            sleepFor(seconds(1));
            truth = saidByDaemons();
            said = saidBy(manager());
        }
        ASSERT_EQ(said, truth) << "the Manager: " << text(said) << "\nthe daemons: " << text(truth);
    }

    // The loop does not sleep while tasks are queued.
    static void expectIdleLoop() { ASSERT_TRUE(test::fallsAsleep(loopThread())); }

    bool lists(const std::string& ssid) {
        const std::vector<wifi::WifiNetwork> networks = manager().networks();
        return std::any_of(networks.begin(), networks.end(),
                           [&](const wifi::WifiNetwork& network) { return network.ssid == ssid; });
    }

    static long stationsAtHome() {
        return std::stol(run("hostapd_cli -p /run/hostapd -i wpa2 list_sta | wc -l"));
    }

    // What it costs

    DayFigures figuresSinceStart() {
        DayFigures figures = usageNow();
        figures.messages = messagesSent();
        const FileWrites::Count written = writes_.total();
        figures.supplicantWrites = written.supplicant;
        figures.choiceWrites = written.choice;
        figures.unchangedWrites = written.unchanged;
        return figures;
    }

    DayFigures figuresOfDay() {
        const auto [logRecords, logInfo] = takeLog();
        device().clearHistory();
        const DayFigures now = figuresSinceStart();
        DayFigures day = now;
        day.wakeUps -= before_.wakeUps;
        day.messages -= before_.messages;
        day.supplicantWrites -= before_.supplicantWrites;
        day.choiceWrites -= before_.choiceWrites;
        day.unchangedWrites -= before_.unchangedWrites;
        day.logRecords = logRecords;
        day.logInfo = logInfo;
        before_ = now;
        return day;
    }

    // Drops the log of the day. Returns how many records it had, and how many of level info and above.
    std::pair<long, long> takeLog() {
        const test::RecordingLog::Records records = log().records();
        log().clear();
        const auto info = std::count_if(records.begin(), records.end(), [](const test::LogRecord& record) {
            return record.level >= spdlog::level::info;
        });
        return {static_cast<long>(records.size()), info};
    }

    // sd-bus numbers the messages of a connection, so the number of the next one tells how many there were.
    long messagesSent() {
        run("(timeout 20 busctl monitor --json=short --match=\"type='method_call',member='Scan'\" "
            ">/run/scan.json 2>/run/scan.err &)");
        const bool monitored =
            device().eventually([] { return succeeds("grep -q Monitoring /run/scan.err"); });
        manager().scan();
        const bool seen =
            monitored && device().eventually([] { return succeeds("grep -q cookie /run/scan.json"); });
        EXPECT_TRUE(seen) << "no Scan was seen on the bus";
        return seen
                   ? std::stol(run("sed -n 's/.*\"cookie\":\\([0-9]*\\).*/\\1/p' /run/scan.json | head -n 1"))
                   : 0;
    }

    AccessPoint home_{"wpa2"};
    AccessPoint other_{"open"};
    AccessPoint visitor_{"twin2"};
    int visitors_ = 0;
    FileWrites writes_;
    std::map<std::string, long> times_;
    DayFigures before_;
    Days days_;
};

TEST_F(Month, EachDayEndsInTheTruthAndCostsNoMoreThanTheFirst) {
    const std::size_t count = daysToPlay();
    for (std::size_t day = 0; day < count; ++day) {
        SCOPED_TRACE("day " + std::to_string(day + 1));
        ASSERT_NO_FATAL_FAILURE(playDay(day));
        report();
    }
    EXPECT_EQ(growth(days()), "");
}

}  // namespace
}  // namespace kaz::vm
