// Each fault is made on the device; kazwifictl doctor finds it, and the line that it suggests mends it.
#include "vm/command.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <ostream>
#include <string>
#include <thread>

namespace kaz::vm {
namespace {

using Json = nlohmann::json;

struct DeviceFault {
    std::string name;
    std::string make;  // shell lines
    std::string link;  // that the first finding is about
    std::string undo;  // what the suggested line has left
    std::string environment = {};
    std::string also = {};  // what the suggested line cannot restore
    bool isMended = true;   // by the suggested line: it has no placeholder and needs no network
};

void PrintTo(const DeviceFault& fault, std::ostream* out) {
    *out << fault.name;
}

constexpr const char* configuration = "/etc/wpa_supplicant/device.conf";

// The findings that are not "ok", and the time that the doctor took.
struct DoctorSays {
    Json findings = Json::array();
    long long ms = 0;

    std::string firstLink() const { return findings.empty() ? "" : findings[0]["link"].get<std::string>(); }
};

DoctorSays askDoctor(const std::string& before) {
    const std::string output = run("{ " + before + "\n}; kazwifictl doctor --json 2>/dev/null || true");
    const Json document = Json::parse(output);
    DoctorSays verdict;
    verdict.ms = document["ms"];
    for (const Json& each : document["findings"]) {
        if (each["verdict"] != "ok") {
            verdict.findings.push_back(each);
        }
    }
    return verdict;
}

// What a fault or its remedy starts may take a moment.
template <typename Condition>
DoctorSays askUntil(const std::string& before, const Condition& condition) {
    constexpr int times = 60;
    DoctorSays verdict = askDoctor(before);
    for (int i = 0; i < times && !condition(verdict); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        verdict = askDoctor(before);
    }
    return verdict;
}

std::string withCountry(std::string remedy) {
    const std::size_t at = remedy.find(" CC ");
    return at == std::string::npos ? remedy : remedy.replace(at, 4, " FI ");
}

class Doctor : public ::testing::TestWithParam<DeviceFault> {
  protected:
    // A healthy device. The guest's kernel has no regulatory database, and needs none.
    static void SetUpTestSuite() {
        run("mkdir -p /lib/firmware && : > /lib/firmware/regulatory.db");
        // The tests restart it more often than a unit that fails.
        run("mkdir -p /run/systemd/system/wpa_supplicant.service.d && printf "
            "'[Unit]\\nStartLimitIntervalSec=0\\n' > "
            "/run/systemd/system/wpa_supplicant.service.d/limit.conf && systemctl daemon-reload");
        run(std::string("grep -q country ") + configuration + " || { echo country=FI >> " + configuration +
            "; systemctl restart wpa_supplicant; }; iw dev wlan0 set power_save off");
    }
    static void TearDownTestSuite() {
        run("rm /run/systemd/system/wpa_supplicant.service.d/limit.conf; systemctl daemon-reload");
        run(std::string("rm -f /lib/firmware/regulatory.db; sed -i /country/d ") + configuration);
    }

    void SetUp() override { run("/opt/guest/device reset"); }
};

TEST_F(Doctor, FindsNothingOnAHealthyDevice) {
    const DoctorSays verdict = askUntil(":", [](const DoctorSays& now) { return now.findings.empty(); });
    EXPECT_TRUE(verdict.findings.empty()) << verdict.findings.dump(1);
    EXPECT_LT(verdict.ms, 2000);
    EXPECT_TRUE(succeeds("kazwifictl doctor"));
}

TEST_F(Doctor, SaysWhatAnotherUserMayNotLookAt) {
    const Json document = Json::parse(
        run("setpriv --reuid=nobody --clear-groups kazwifictl doctor --json 2>/dev/null || true"));
    EXPECT_LT(document["ms"], 2000);
    EXPECT_EQ(document["findings"][0]["link"], "bus") << "the policy does not allow nobody";
    bool configuration = false;
    for (const Json& each : document["findings"]) {
        configuration |= each["link"] == "configuration" && each["verdict"] == "not-looked-at";
    }
    EXPECT_TRUE(configuration) << document.dump(1);
}

TEST_P(Doctor, FindsTheFaultAndMendsIt) {
    const DeviceFault& fault = GetParam();
    const std::string environment = fault.environment.empty() ? ":" : fault.environment;
    run(fault.make);
    const DoctorSays found =
        askUntil(environment, [&](const DoctorSays& now) { return now.firstLink() == fault.link; });
    EXPECT_EQ(found.firstLink(), fault.link) << found.findings.dump(1);
    EXPECT_LT(found.ms, 2000);
    std::printf("%s: %lld ms: %s\n", fault.name.c_str(), found.ms,
                found.findings.empty() ? "" : found.findings[0]["what"].get<std::string>().c_str());
    if (fault.isMended && !found.findings.empty() && found.findings[0]["remedy"].is_string()) {
        std::string remedy = withCountry(found.findings[0]["remedy"]) + fault.also;
        std::printf("    %s\n", remedy.c_str());
        // A remedy in the environment lasts as long as its shell.
        if (fault.environment.empty()) {
            run(remedy);
            remedy = ":";
        }
        const DoctorSays after =
            askUntil(environment + "\n" + remedy, [](const DoctorSays& now) { return now.findings.empty(); });
        EXPECT_TRUE(after.findings.empty()) << after.findings.dump(1);
    }
    if (!fault.undo.empty()) {
        run(fault.undo);
    }
    std::fflush(stdout);
}

// ExecStart= of the unit.
std::string startedWith(const std::string& options) {
    return "printf '%s\\n' '[Service]' 'ExecStart=' 'ExecStart=/sbin/wpa_supplicant " + options +
           "' > /etc/systemd/system/wpa_supplicant.service.d/fault.conf && systemctl daemon-reload && "
           "systemctl restart --no-block wpa_supplicant";
}

const std::string restarted = "; systemctl restart wpa_supplicant";
const std::string undoDropIns =
    "rm -f /etc/systemd/system/wpa_supplicant.service.d/fault.conf "
    "/etc/systemd/system/wpa_supplicant.service.d/zz-kazwifi-*.conf; systemctl daemon-reload; "
    "systemctl reset-failed wpa_supplicant; systemctl restart wpa_supplicant; iw dev wlan0 set power_save "
    "off";
const std::string conf = configuration;

// In the networkd file of wlan0.
std::string networkLine(const std::string& section, const std::string& line) {
    return "mkdir -p /etc/systemd/network/wlan0.network.d && printf '%s\\n' '[" + section + "]' '" + line +
           "' > /etc/systemd/network/wlan0.network.d/fault.conf && networkctl reload";
}
const std::string undoNetwork =
    "rm -rf /etc/systemd/network/*.network.d /etc/systemd/network/50-*; networkctl reload";

const std::string choiceFolder = "/home/root/.config/tessaline";

INSTANTIATE_TEST_SUITE_P(
    Bus, Doctor,
    ::testing::Values(
        DeviceFault{"NoBus", ":", "bus", "",
                    "export DBUS_SYSTEM_BUS_ADDRESS=${DBUS_SYSTEM_BUS_ADDRESS-unix:path=/nowhere}"},
        DeviceFault{"BusPolicy",
                    "mkdir -p /run/policy && mv $(ls /etc/dbus-1/system.d/wpa_supplicant.conf "
                    "/usr/share/dbus-1/system.d/wpa_supplicant.conf 2>/dev/null) /run/policy/ && "
                    "systemctl reload dbus",
                    "bus",
                    "rm /etc/dbus-1/system.d/zz-kazwifi-*; mv /run/policy/* /etc/dbus-1/system.d/; "
                    "systemctl reload dbus"}),
    [](const auto& fault) { return fault.param.name; });

INSTANTIATE_TEST_SUITE_P(Choice, Doctor,
                         ::testing::Values(DeviceFault{"SwitchedOff", "kazwifictl off", "choice", ""},
                                           DeviceFault{"ChoiceNotValid",
                                                       "mkdir -p " + choiceFolder + " && echo wifi=maybe > " +
                                                           choiceFolder + "/kaz.conf",
                                                       "choice", ""},
                                           DeviceFault{"ChoiceReadOnly",
                                                       "mkdir -p " + choiceFolder +
                                                           " && mount -t tmpfs -o ro none " + choiceFolder,
                                                       "choice", "umount " + choiceFolder},
                                           DeviceFault{"ChoiceIsAFolder",
                                                       "mkdir -p " + choiceFolder + "/kaz.conf", "choice",
                                                       "rm -rf " + choiceFolder + "/kaz.conf.old"}),
                         [](const auto& fault) { return fault.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Unit, Doctor,
    ::testing::Values(
        DeviceFault{"Masked", "systemctl stop wpa_supplicant; systemctl mask wpa_supplicant", "unit", ""},
        DeviceFault{
            "Missing",
            "systemctl stop wpa_supplicant; mv /lib/systemd/system/wpa_supplicant.service /run/; systemctl "
            "daemon-reload",
            "unit",
            "rm /etc/systemd/system/wpa_supplicant.service; mv /run/wpa_supplicant.service "
            "/lib/systemd/system/; " +
                undoDropIns},
        DeviceFault{
            "OtherType",
            "printf '%s\\n' '[Service]' 'Type=simple' > "
            "/etc/systemd/system/wpa_supplicant.service.d/fault.conf; "
            "systemctl daemon-reload; systemctl restart wpa_supplicant; iw dev wlan0 set power_save off",
            "unit", undoDropIns},
        DeviceFault{"NotOnTheBus", startedWith("-s -iwlan0 -Dnl80211 -c " + conf), "command-line",
                    undoDropIns},
        DeviceFault{"NoInterfaceNamed", startedWith("-u -s -c " + conf), "command-line", undoDropIns},
        DeviceFault{"WrongInterface", startedWith("-u -s -iwlan7 -Dnl80211 -c" + conf), "command-line",
                    undoDropIns},
        DeviceFault{"Stopped", "systemctl stop wpa_supplicant", "running", ""},
        DeviceFault{
            "Failed",
            "systemctl kill --signal=ABRT wpa_supplicant; until systemctl is-failed wpa_supplicant; do "
            "sleep 0.1; done",
            "running", ""},
        DeviceFault{"Suspended", "systemctl kill --signal=STOP wpa_supplicant", "supplicant",
                    "systemctl kill --signal=CONT wpa_supplicant"}),
    [](const auto& fault) { return fault.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Interface, Doctor,
    ::testing::Values(
        DeviceFault{"Blocked", "echo 1 | tee /sys/class/net/wlan0/phy80211/rfkill*/soft", "block", ""},
        DeviceFault{"Down", "ip link set wlan0 down", "interface", ""},
        DeviceFault{"Deleted", "iw dev wlan0 del", "radio", "", "", "; iw dev wlan0 set power_save off"},
        DeviceFault{"TwoInterfaces",
                    "iw dev wlan0 interface add wlan9 type managed addr 02:00:00:00:aa:01; busctl call "
                    "fi.w1.wpa_supplicant1 /fi/w1/wpa_supplicant1 "
                    "fi.w1.wpa_supplicant1 CreateInterface 'a{sv}' 2 Ifname s wlan9 Driver s nl80211",
                    "interface", "iw dev wlan9 del"},
        DeviceFault{"SecondSupplicant", "wpa_supplicant -B -iwlan0 -Dnl80211 -C/run/second", "rivals",
                    "iw dev wlan0 set power_save off"},
        DeviceFault{"Iwd",
                    "mkdir -p /opt/rival && cp /bin/sleep /opt/rival/iwd && printf '%s\\n' "
                    "'[Service]' 'ExecStart=/opt/rival/iwd "
                    "1000000' '[Install]' 'WantedBy=multi-user.target' > "
                    "/etc/systemd/system/iwd.service && systemctl "
                    "daemon-reload && systemctl enable --now iwd.service",
                    "rivals", "rm /etc/systemd/system/iwd.service; iw dev wlan0 set power_save off"},
        DeviceFault{"PowerSave", "iw dev wlan0 set power_save on", "power-save", ""},
        DeviceFault{"Clock", "date +%s > /run/clock; date --set=@86400", "clock",
                    "date --set=@$(cat /run/clock)"}),
    [](const auto& fault) { return fault.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Configuration, Doctor,
    ::testing::Values(
        DeviceFault{"NotUpdated", "sed -i /update_config/d " + conf + restarted, "configuration", ""},
        DeviceFault{"UpdateSwitchedOff", "sed -i s/update_config=1/update_config=0/ " + conf + restarted,
                    "configuration", ""},
        DeviceFault{"ReadableForAll", "chmod 644 " + conf, "configuration", undoDropIns},
        DeviceFault{"OfAnotherUser", "chown nobody " + conf, "configuration", ""},
        DeviceFault{"NotValid", "echo nonsense >> " + conf + "; systemctl restart wpa_supplicant || true",
                    "configuration", "sed -i /nonsense/d " + conf},
        DeviceFault{"ConfigurationMissing", "mv " + conf + " /run/; systemctl restart wpa_supplicant || true",
                    "configuration", "mv /run/device.conf " + conf + restarted, "",
                    "; echo country=FI >> " + conf + restarted},
        DeviceFault{"NoCountry", "sed -i /country/d " + conf + restarted, "country", ""},
        DeviceFault{"NoRegulatoryDatabase", "rm /lib/firmware/regulatory.db", "country",
                    ": > /lib/firmware/regulatory.db", "", "", false},
        DeviceFault{"DisabledInTheFile",
                    "printf 'network={\\n ssid=\"Kaz Elsewhere\"\\n key_mgmt=NONE\\n disabled=1\\n}\\n' >> " +
                        conf + restarted,
                    "networks", ""},
        DeviceFault{
            "WithoutName",
            "printf 'network={\\n key_mgmt=WPA-PSK\\n psk=\"name-secret\"\\n}\\n' >> " + conf + restarted,
            "networks", ""},
        DeviceFault{
            "SaePwe",
            "printf 'network={\\n ssid=\"Kaz SAE\"\\n key_mgmt=SAE\\n sae_password=\"x\"\\n}\\n' >> " + conf +
                restarted,
            "sae", "sed -i /sae_pwe/d " + conf + restarted},
        DeviceFault{"ServerNotVerified",
                    "printf 'network={\\n ssid=\"Elsewhere\"\\n key_mgmt=WPA-EAP\\n eap=PEAP\\n "
                    "identity=\"alice\"\\n}\\n' >> " +
                        conf + restarted,
                    "enterprise", "", "", "", false}),
    [](const auto& fault) { return fault.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Addresses, Doctor,
    ::testing::Values(
        DeviceFault{"NetworkdStopped", "systemctl stop systemd-networkd.socket systemd-networkd", "networkd",
                    ""},
        DeviceFault{"NotManaged", "mv /etc/systemd/network/wlan0.network /run/; networkctl reload",
                    "networkd", "mv /run/wlan0.network /etc/systemd/network/; " + undoNetwork},
        DeviceFault{"NotRequired", networkLine("Link", "RequiredForOnline=no"), "addresses", undoNetwork},
        DeviceFault{"AnotherRequired",
                    "ip link add dummy0 type dummy; printf "
                    "'[Match]\\nName=dummy0\\n[Network]\\nLinkLocalAddressing=no\\n' > "
                    "/etc/systemd/network/60-dummy.network; "
                    "networkctl reload",
                    "addresses",
                    "ip link del dummy0; rm /etc/systemd/network/60-dummy.network; " + undoNetwork},
        DeviceFault{"LinkLocal", networkLine("Network", "LinkLocalAddressing=ipv6"), "addresses",
                    undoNetwork},
        DeviceFault{"NoDhcp", networkLine("Network", "DHCP=no"), "addresses", undoNetwork}),
    [](const auto& fault) { return fault.param.name; });

}  // namespace
}  // namespace kaz::vm
