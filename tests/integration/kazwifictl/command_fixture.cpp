#include "integration/kazwifictl/command_fixture.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace kaz::test {

sim::AccessPoint accessPoint(const std::string& ssid, sim::Security security, std::int16_t signal,
                             const std::string& password) {
    sim::AccessPoint point;
    point.ssid = ssid;
    point.security = security;
    point.signal = signal;
    point.password = password;
    return point;
}

void waitFor(RunningProgram& program, const std::string& text) {
    if (!program.waitFor(text)) {
        throw std::runtime_error("no \"" + text + "\" in\n" + program.out() + program.err());
    }
}

void converse(RunningProgram& program, const std::vector<std::pair<std::string, std::string>>& turns) {
    for (const auto& [typed, shown] : turns) {
        program.send(typed);
        waitFor(program, shown);
    }
}

CommandFixture::CommandFixture() {
    sim::AccessPoint hidden = accessPoint("Speakeasy", sim::Security::wpa3, -57, "joe sent me");
    hidden.hidden = true;
    sim::AccessPoint campus = accessPoint("Campus", sim::Security::eap, -77);
    campus.accounts = {{"ada", "engine no 2", "PEAP", "MSCHAPV2"}, {"device", "", "TLS", ""}};
    campus.caFile = "/etc/campus.pem";
    campus.serverDomain = "radius.example.org";
    neighbourhood.accessPoints = {
        accessPoint("Home", sim::Security::wpa2, -48, "correct horse"),
        accessPoint("Café Größe", sim::Security::open, -69),
        accessPoint("東京カフェ", sim::Security::wpa, -58, "sumimasen"),
        accessPoint("Old Router in the cellar", sim::Security::wep, -82, "abcde"),
        accessPoint("Vault", sim::Security::wpa3, -71, "nothing but sae"),
        campus,
        hidden,
    };
    // Empty, because the editrc of the user may bind any key to anything.
    writeFile(folder_ / "editrc", "");
    environment = {{"DBUS_SYSTEM_BUS_ADDRESS", bus_.address()},
                   {"KAZ_CONFIG_FILE", folder_ / "kaz.conf"},
                   {"KAZ_DEVICE_ROOT", folder_ / "root"},
                   {"XDG_STATE_HOME", folder_ / "state"},
                   {"TMPDIR", folder_.path()},
                   {"LC_ALL", "C.UTF-8"},
                   {"TERM", "xterm-256color"},
                   {"TZ", "UTC"},
                   {"EDITRC", folder_ / "editrc"},
                   {"NO_COLOR", ""},
                   {"COLUMNS", ""}};
}

void CommandFixture::start() {
    for (sim::AccessPoint& point : neighbourhood.accessPoints) {
        if (point.bssid.empty()) {
            point.bssid = neighbourhood.freeBssid();
        }
    }
    device_ = std::make_unique<sim::SimulatedDevice>(
        sim::SimulatedDevice::Options{bus_.address(), neighbourhood, timeScale, folder_ / "supplicant.conf"});
}

void CommandFixture::startAndScan() {
    start();
    runs(0, {"scan"});
}

std::vector<std::string> CommandFixture::command(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words{KAZWIFICTL_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

Finished CommandFixture::run(const std::vector<std::string>& arguments, const std::string& input) {
    const auto program = withPipes(arguments);
    program->send(input);
    const Ending ending = program->wait();
    return {ending, program->out(), program->err()};
}

Finished CommandFixture::runs(int status, const std::vector<std::string>& arguments,
                              const std::string& input) {
    const Finished result = run(arguments, input);
    EXPECT_EQ(result.ending.status, status) << arguments.front() << "\n--- out\n"
                                            << result.out << "--- err\n"
                                            << result.err;
    return result;
}

std::unique_ptr<RunningProgram> CommandFixture::inTerminal(const std::vector<std::string>& arguments,
                                                           unsigned short columns) {
    return std::make_unique<RunningProgram>(command(arguments), environment,
                                            RunningProgram::Terminal{columns, 24});
}

std::unique_ptr<RunningProgram> CommandFixture::withPipes(const std::vector<std::string>& arguments) {
    return std::make_unique<RunningProgram>(command(arguments), environment);
}

void CommandFixture::save(const std::string& ssid, const std::string& password) {
    sim::Settings settings;
    settings.emplace_back("ssid", sim::ByteSetting{ssid});
    settings.emplace_back("key_mgmt", std::string("WPA-PSK"));
    settings.emplace_back("psk", password);
    neighbourhood.configuredNetworks.push_back(settings);
}

void CommandFixture::connectHome() {
    runs(0, {"connect", "Home", "--password-file", "-"}, "correct horse\n");
}

bool CommandFixture::wasCalled(const std::string& member) const {
    const auto calls = device_->calls();
    return std::any_of(calls.begin(), calls.end(),
                       [&](const sim::Call& call) { return call.member == member; });
}

std::string CommandFixture::savedConfiguration() const {
    return readFile(folder_ / "supplicant.conf");
}

}  // namespace kaz::test
