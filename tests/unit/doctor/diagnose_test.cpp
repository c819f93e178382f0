#include "doctor/diagnose.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <string>
#include <vector>

namespace kaz::doctor {

void PrintTo(const Finding& finding, std::ostream* out) {
    *out << nameOf(finding.verdict) << ' ' << nameOf(finding.link) << ": " << finding.what << " ["
         << finding.remedy << ']';
}

namespace {

using inspection::Fact;
using inspection::Facts;
using inspection::ManagedLink;
using inspection::Network;
using inspection::Obstacle;
using inspection::Process;
using inspection::Supplicant;
using inspection::SupplicantFile;
using inspection::SupplicantInterface;
using inspection::Unit;
using inspection::Unknown;

const std::filesystem::path configuration = "/etc/wpa_supplicant/device.conf";

Facts healthy() {
    using namespace std::chrono_literals;
    Facts facts;
    facts.userName = "root";
    facts.clock = std::chrono::sys_days(2026y / 11 / 23);
    facts.busNames = std::set<std::string>{"fi.w1.wpa_supplicant1"};
    facts.unit = Unit{"loaded",
                      "",
                      "active",
                      "success",
                      "dbus",
                      "fi.w1.wpa_supplicant1",
                      {"/sbin/wpa_supplicant", "-u", "-s", "-iwlan0", "-Dnl80211", "-c", configuration},
                      7};
    facts.mayStartUnits = true;
    facts.supplicant = Supplicant{{{"/fi/w1/wpa_supplicant1/Interfaces/0", "wlan0", "completed",
                                    configuration, std::vector<Network>{}}}};
    facts.onlineState = std::string("online");
    facts.choiceFile.path = "/home/root/kaz.conf";
    facts.choiceFile.choice = Fact<std::string>::absent();
    facts.supplicantFilePath = configuration;
    facts.supplicantFile =
        SupplicantFile{configuration, 0, 0600, true,
                       SupplicantFile::Settings{{{"update_config", "1"}, {"country", "FI"}}, {}, {}}};
    facts.supplicants = {Process{7, "wpa_supplicant", {"/sbin/wpa_supplicant", "-iwlan0"}, false}};
    ManagedLink managed;
    managed.networkFile = "/etc/systemd/network/wlan0.network";
    managed.settings = {{"Network/DHCP", "ipv4"}, {"Network/LinkLocalAddressing", "no"}};
    facts.links = {
        {"wlan0", 3, true, true, "phy0", {{"/sys/class/rfkill/rfkill0", false, false}}, managed, false}};
    facts.phys = {"phy0"};
    facts.country = std::string("FI");
    facts.hasRegulatoryDatabase = true;
    return facts;
}

// Changes a part of the facts.
template <typename Value, typename Change>
void change(Fact<Value>& fact, const Change& change) {
    Value value = *fact;
    change(value);
    fact = std::move(value);
}

void addNetwork(Facts& facts, const Network& network) {
    change(facts.supplicant, [&](Supplicant& supplicant) {
        change(supplicant.interfaces[0].networks, [&](std::vector<Network>& all) { all.push_back(network); });
    });
}

void changeUnit(Facts& facts, void (*change)(Unit&)) {
    doctor::change(facts.unit, change);
}

void changeSettings(Facts& facts, void (*change)(SupplicantFile::Settings&)) {
    doctor::change(facts.supplicantFile,
                   [&](SupplicantFile& file) { doctor::change(file.settings, change); });
}

void changeFile(Facts& facts, void (*change)(SupplicantFile&)) {
    doctor::change(facts.supplicantFile, change);
}

void changeManaged(Facts& facts, void (*change)(ManagedLink&)) {
    doctor::change(facts.links[0].managed, change);
}

// The unit does not run, and nobody answers in the supplicant's name.
void stop(Facts& facts, const std::string& state = "inactive") {
    change(facts.unit, [&](Unit& unit) {
        unit.activeState = state;
        unit.mainPid = 0;
    });
    facts.supplicant = Fact<Supplicant>::absent();
    facts.supplicants.clear();
    facts.links[0].isUp = false;
}

struct Row {
    std::string name;
    void (*make)(Facts& facts);
    Verdict verdict;
    Link link;
    std::string remedy;  // a part of it
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class Diagnose : public ::testing::TestWithParam<Row> {};

TEST(Diagnosis, OfAHealthyDeviceFindsNothing) {
    for (const Finding& each : diagnose(healthy())) {
        EXPECT_EQ(each.verdict, Verdict::ok) << ::testing::PrintToString(each);
        EXPECT_EQ(each.remedy, "");
    }
    EXPECT_TRUE(isHealthy(diagnose(healthy())));
}

TEST(Diagnosis, NamesEveryLinkOnce) {
    std::vector<Link> links;
    for (const Finding& each : diagnose(healthy())) {
        links.push_back(each.link);
    }
    EXPECT_EQ(links.size(), 21U);
    EXPECT_TRUE(std::is_sorted(links.begin(), links.end()));
}

TEST(Diagnosis, SaysWhatItCouldNotLookAt) {
    const std::vector<Finding> findings = diagnose(Facts());
    EXPECT_THAT(findings, ::testing::Contains(::testing::Field(&Finding::verdict, Verdict::notLookedAt)));
    EXPECT_THAT(findings, ::testing::Each(::testing::Field(&Finding::what, ::testing::Not(""))));
}

TEST_P(Diagnose, FindsTheCauseAndNothingElse) {
    Facts facts = healthy();
    GetParam().make(facts);
    const std::vector<Finding> findings = diagnose(facts);
    ASSERT_FALSE(findings.empty());
    EXPECT_EQ(findings[0].verdict, GetParam().verdict) << ::testing::PrintToString(findings);
    EXPECT_EQ(nameOf(findings[0].link), nameOf(GetParam().link)) << ::testing::PrintToString(findings);
    EXPECT_THAT(findings[0].remedy, ::testing::HasSubstr(GetParam().remedy));
    const auto faults = std::count_if(findings.begin(), findings.end(), [](const Finding& each) {
        return each.verdict == Verdict::broken || each.verdict == Verdict::doubtful;
    });
    EXPECT_EQ(faults, GetParam().verdict == Verdict::notLookedAt ? 0 : 1)
        << ::testing::PrintToString(findings);
    EXPECT_EQ(isHealthy(findings), GetParam().verdict != Verdict::broken);
}

const Unknown denied{Obstacle::notAllowed, "denied"};
const Unknown silent{Obstacle::noAnswer, "no answer"};

const std::vector<Row> rows{
    {"NoBus",
     [](Facts& f) {
         const Unknown none{Obstacle::failed, "No such file or directory"};
         f.busNames = none;
         f.unit = none;
         f.supplicant = none;
         f.onlineState = none;
         f.mayStartUnits = none;
     },
     Verdict::broken, Link::bus, "systemctl start dbus.socket"},
    {"BusHangs",
     [](Facts& f) {
         f.busNames = silent;
         f.unit = silent;
         f.supplicant = silent;
         f.onlineState = silent;
     },
     Verdict::broken, Link::bus, "systemctl restart dbus"},
    {"BusDenies", [](Facts& f) { f.supplicant = denied; }, Verdict::broken, Link::bus,
     "<allow send_destination"},
    {"SystemdHangs", [](Facts& f) { f.unit = silent; }, Verdict::broken, Link::systemd, "daemon-reexec"},
    {"NoSystemd", [](Facts& f) { f.unit = Fact<Unit>::absent(); }, Verdict::broken, Link::systemd, ""},
    {"NoRights", [](Facts& f) { f.mayStartUnits = false; }, Verdict::doubtful, Link::rights,
     "polkit.Result.YES"},
    {"NoPolkit", [](Facts& f) { f.mayStartUnits = Fact<bool>::absent(); }, Verdict::doubtful, Link::rights,
     ""},
    {"SwitchedOff",
     [](Facts& f) {
         f.choiceFile.choice = std::string("off");
         stop(f);
     },
     Verdict::broken, Link::choice, "kazwifictl on"},
    {"ChoiceNotValid", [](Facts& f) { f.choiceFile.choice = std::string("maybe"); }, Verdict::broken,
     Link::choice, "kazwifictl on"},
    {"ChoiceReadOnly", [](Facts& f) { f.choiceFile.writeError = EROFS; }, Verdict::broken, Link::choice,
     "mount -o remount,rw \"$(stat --format=%m /home/root)\""},
    {"ChoiceIsAFolder", [](Facts& f) { f.choiceFile.writeError = EISDIR; }, Verdict::broken, Link::choice,
     "mv "},
    {"ChoiceDenied", [](Facts& f) { f.choiceFile.choice = denied; }, Verdict::notLookedAt, Link::choice, ""},
    {"NoInterfaceOnTheRadio",
     [](Facts& f) {
         stop(f);
         f.links.clear();
     },
     Verdict::broken, Link::radio, "iw phy phy0 interface add wlan0 type managed"},
    {"NoRadio",
     [](Facts& f) {
         stop(f, "failed");
         f.links.clear();
         f.phys.clear();
     },
     Verdict::broken, Link::radio, "journalctl"},
    {"Masked",
     [](Facts& f) {
         stop(f);
         changeUnit(f, [](Unit& unit) { unit.loadState = "masked"; });
     },
     Verdict::broken, Link::unit, "systemctl unmask wpa_supplicant.service"},
    {"UnitMissing",
     [](Facts& f) {
         stop(f);
         changeUnit(f, [](Unit& unit) { unit = {"not-found", "", "inactive", "", "", "", {}, 0}; });
         f.supplicantFilePath.clear();
         f.supplicantFile = Unknown{};
     },
     Verdict::broken, Link::unit, "Type=dbus"},
    {"UnitNotLoaded",
     [](Facts& f) {
         stop(f);
         changeUnit(f, [](Unit& unit) { unit.loadState = "bad-setting"; });
     },
     Verdict::broken, Link::unit, "systemd-analyze verify"},
    {"OtherType", [](Facts& f) { changeUnit(f, [](Unit& unit) { unit.type = "simple"; }); },
     Verdict::doubtful, Link::unit, "Type=dbus"},
    {"NotOnTheBus",
     [](Facts& f) {
         f.supplicant = Fact<Supplicant>::absent();
         changeUnit(f, [](Unit& unit) { unit.command = {"/sbin/wpa_supplicant", "-siwlan0", "-c/x"}; });
     },
     Verdict::broken, Link::commandLine, "ExecStart=/sbin/wpa_supplicant -u -s -iwlan0 -c/x'"},
    {"NoInterfaceNamed",
     [](Facts& f) {
         f.supplicant = Supplicant();
         changeUnit(f, [](Unit& unit) { unit.command = {"/sbin/wpa_supplicant", "-us"}; });
     },
     Verdict::broken, Link::commandLine,
     "ExecStart=/sbin/wpa_supplicant -u -s -iwlan0 -c/etc/wpa_supplicant/wpa_supplicant.conf'"},
    {"WrongInterface",
     [](Facts& f) {
         stop(f, "failed");
         changeUnit(f, [](Unit& unit) { unit.command[3] = "-iwlan7"; });
     },
     Verdict::broken, Link::commandLine, "-u -s -iwlan0"},
    {"ConfigurationMissing",
     [](Facts& f) {
         stop(f, "failed");
         f.supplicantFile = Fact<SupplicantFile>::absent();
     },
     Verdict::broken, Link::configuration, "update_config=1 > /etc/wpa_supplicant/device.conf"},
    {"NotUpdated",
     [](Facts& f) { changeSettings(f, [](auto& settings) { settings.globals.erase("update_config"); }); },
     Verdict::broken, Link::configuration, "printf"},
    {"UpdateSwitchedOff",
     [](Facts& f) { changeSettings(f, [](auto& settings) { settings.globals["update_config"] = "0"; }); },
     Verdict::broken, Link::configuration, "sed -i 's/^update_config=.*/update_config=1/'"},
    {"NotValid",
     [](Facts& f) {
         stop(f, "failed");
         changeSettings(f, [](auto& settings) { settings.badLine = 12; });
     },
     Verdict::broken, Link::configuration, "sed -i '12s/^/#/'"},
    {"ReadableForAll", [](Facts& f) { changeFile(f, [](SupplicantFile& file) { file.mode = 0644; }); },
     Verdict::doubtful, Link::configuration, "chmod 600"},
    {"OfAnotherUser", [](Facts& f) { changeFile(f, [](SupplicantFile& file) { file.owner = 33; }); },
     Verdict::doubtful, Link::configuration, "chown root:"},
    {"FolderReadOnly",
     [](Facts& f) { changeFile(f, [](SupplicantFile& file) { file.folderIsWritable = false; }); },
     Verdict::broken, Link::configuration, "remount,rw"},
    {"ConfigurationDenied", [](Facts& f) { f.supplicantFile = denied; }, Verdict::notLookedAt,
     Link::configuration, ""},
    {"SecondSupplicant",
     [](Facts& f) {
         f.supplicants.push_back({8, "wpa_supplicant", {"wpa_supplicant", "-B", "-i", "wlan0"}, false});
     },
     Verdict::broken, Link::rivals, "kill 8"},
    {"Iwd",
     [](Facts& f) {
         f.rivals.push_back({9, "iwd", {}, false});
     },
     Verdict::broken, Link::rivals, "iwd.service"},
    {"NetworkManager",
     [](Facts& f) {
         f.rivals.push_back({9, "NetworkManager", {}, false});
     },
     Verdict::doubtful, Link::rivals, "nmcli device set wlan0 managed no"},
    {"Stopped", [](Facts& f) { stop(f); }, Verdict::broken, Link::running, "systemctl start"},
    {"Failed", [](Facts& f) { stop(f, "failed"); }, Verdict::broken, Link::running, "reset-failed"},
    {"Starting", [](Facts& f) { stop(f, "activating"); }, Verdict::doubtful, Link::running, "journalctl"},
    {"Suspended",
     [](Facts& f) {
         f.supplicant = silent;
         f.supplicants[0].isStopped = true;
     },
     Verdict::broken, Link::supplicant, "kill -CONT 7"},
    {"SupplicantHangs", [](Facts& f) { f.supplicant = silent; }, Verdict::broken, Link::supplicant,
     "--signal=KILL"},
    {"SupplicantNotThere", [](Facts& f) { f.supplicant = Fact<Supplicant>::absent(); }, Verdict::broken,
     Link::supplicant, "systemctl restart"},
    {"Blocked",
     [](Facts& f) {
         f.links[0].switches[0].soft = true;
         f.links[0].isUp = false;
     },
     Verdict::broken, Link::block, "echo 0 > /sys/class/rfkill/rfkill0/soft"},
    {"BlockedBySwitch", [](Facts& f) { f.links[0].switches[0].hard = true; }, Verdict::broken, Link::block,
     ""},
    {"Down", [](Facts& f) { f.links[0].isUp = false; }, Verdict::broken, Link::interface,
     "ip link set wlan0 up"},
    {"NoInterface", [](Facts& f) { f.supplicant = Supplicant(); }, Verdict::broken, Link::interface,
     "systemctl restart"},
    {"TwoInterfaces",
     [](Facts& f) {
         change(f.supplicant, [](Supplicant& supplicant) {
             supplicant.interfaces.push_back({"/1", "wlan1", "", "", std::vector<Network>()});
         });
     },
     Verdict::doubtful, Link::interface, "RemoveInterface o /1"},
    {"AnotherInterfaceFirst",
     [](Facts& f) {
         change(f.supplicant, [](Supplicant& supplicant) {
             supplicant.interfaces.insert(supplicant.interfaces.begin(),
                                          {"/1", "wlan1", "", "", std::vector<Network>()});
         });
     },
     Verdict::broken, Link::interface, "RemoveInterface o /1"},
    {"NoCountry",
     [](Facts& f) {
         f.country = std::string("00");
         changeSettings(f, [](auto& settings) { settings.globals.erase("country"); });
     },
     Verdict::doubtful, Link::country, "country=%s"},
    {"NoRegulatoryDatabase", [](Facts& f) { f.hasRegulatoryDatabase = false; }, Verdict::doubtful,
     Link::country, "wireless-regdb"},
    {"WithoutName",
     [](Facts& f) {
         Network network;
         network.path = "/networks/0";
         addNetwork(f, network);
     },
     Verdict::doubtful, Link::networks, "RemoveNetwork o /networks/0"},
    {"DisabledByAProgram",
     [](Facts& f) {
         addNetwork(f, {"Home", true, true, false, false, false, "/n"});
     },
     Verdict::doubtful, Link::networks, "systemctl restart"},
    {"DisabledInTheFile",
     [](Facts& f) {
         changeSettings(f, [](auto& settings) {
             settings.networks = {{"Home", true, true, false, false, false, ""}};
         });
     },
     Verdict::doubtful, Link::networks, "disabled=1"},
    {"SaePwe",
     [](Facts& f) {
         addNetwork(f, {"Home", false, true, true, false, false, "/n"});
     },
     Verdict::doubtful, Link::sae, "sae_pwe=2"},
    {"ServerNotVerified",
     [](Facts& f) {
         addNetwork(f, {"Work", false, true, false, true, false, "/n"});
     },
     Verdict::doubtful, Link::enterprise, "--ca-file"},
    {"NetworkdStopped", [](Facts& f) { f.onlineState = Fact<std::string>::absent(); }, Verdict::broken,
     Link::networkd, "systemctl start systemd-networkd"},
    {"NetworkdHangs", [](Facts& f) { f.onlineState = silent; }, Verdict::broken, Link::networkd,
     "--signal=KILL"},
    {"NotManaged", [](Facts& f) { changeManaged(f, [](ManagedLink& link) { link.networkFile.clear(); }); },
     Verdict::broken, Link::networkd, "Name=wlan0"},
    {"NotRequired",
     [](Facts& f) { changeManaged(f, [](ManagedLink& link) { link.requiredForOnline = false; }); },
     Verdict::broken, Link::addresses, "wlan0.network.d && printf '%s\\n' '[Link]' RequiredForOnline=yes"},
    {"AnotherRequired",
     [](Facts& f) {
         f.links.push_back(f.links[0]);
         f.links[1].name = "eth0";
     },
     Verdict::broken, Link::addresses, "RequiredForOnline=no"},
    {"LinkLocal",
     [](Facts& f) {
         changeManaged(f, [](ManagedLink& link) { link.settings.erase("Network/LinkLocalAddressing"); });
     },
     Verdict::doubtful, Link::addresses, "LinkLocalAddressing=no"},
    {"NoDhcp",
     [](Facts& f) { changeManaged(f, [](ManagedLink& link) { link.settings["Network/DHCP"] = "no"; }); },
     Verdict::broken, Link::addresses, "DHCP=ipv4"},
    {"PowerSave", [](Facts& f) { f.links[0].powerSave = true; }, Verdict::doubtful, Link::powerSave,
     "iw dev wlan0 set power_save off"},
    {"Clock", [](Facts& f) { f.clock = {}; }, Verdict::broken, Link::clock, "date --set"},
};

INSTANTIATE_TEST_SUITE_P(All, Diagnose, ::testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace kaz::doctor
