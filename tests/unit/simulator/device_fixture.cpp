#include "unit/simulator/device_fixture.h"

#include <algorithm>
#include <cstdint>

namespace kaz::sim::test {

Settings openNetwork(const std::string& ssid) {
    return {{"ssid", ssid}, {"key_mgmt", "NONE"}, {"auth_alg", "OPEN"}};
}

Settings pskNetwork(const std::string& ssid, const std::string& psk) {
    return {{"ssid", ssid}, {"key_mgmt", "WPA-PSK"}, {"psk", psk}, {"ieee80211w", std::int64_t{1}}};
}

Settings saeNetwork(const std::string& ssid, const std::string& password) {
    return {{"ssid", ssid}, {"key_mgmt", "SAE"}, {"sae_password", password}, {"ieee80211w", std::int64_t{2}}};
}

Target networkAt(const std::string& path) {
    return {"fi.w1.wpa_supplicant1", path, "fi.w1.wpa_supplicant1.Network"};
}

Target bssAt(const std::string& path) {
    return {"fi.w1.wpa_supplicant1", path, "fi.w1.wpa_supplicant1.BSS"};
}

bool includes(const json& changes, const json& expected) {
    json both = changes;
    both.update(expected);
    return both == changes;
}

namespace {

void appendSetting(sd_bus_message* call, const std::string& key, const Setting& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        appendEntry(call, key, *text);
    } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        appendEntry(call, key, static_cast<std::int32_t>(*number));
    } else if (const auto* const bytes = std::get_if<ByteSetting>(&value)) {
        appendEntry(call, key, Bytes(bytes->bytes));
    } else {
        appendEntry(call, key, true);
    }
}

}  // namespace

void DeviceTest::start(SimulatedDevice::Options options) {
    constexpr double fast = 0.01;
    options.busAddress = bus_.address();
    options.timeScale = fast;
    client_.emplace(bus_.address());
    device_.emplace(std::move(options));
}

void DeviceTest::startInRangeOf(std::vector<AccessPoint> accessPoints) {
    start({.neighbourhood = {.accessPoints = std::move(accessPoints)}});
}

void DeviceTest::startConnected(const AccessPoint& accessPoint) {
    startInRangeOf({accessPoint});
    select(addNetwork(openNetwork(accessPoint.ssid)));
    ASSERT_TRUE(reaches("completed"));
}

std::string DeviceTest::addNetwork(const Settings& settings) {
    const Message call = client_->newCall(supplicantInterface, "AddNetwork");
    appendContainer(call.get(), 'a', "{sv}", [&] {
        for (const auto& [key, value] : settings) {
            appendSetting(call.get(), key, value);
        }
    });
    return client_->send(call).at(0);
}

void DeviceTest::select(const std::string& network) {
    call("SelectNetwork", "o", network.c_str());
}

bool DeviceTest::changes(const json& expected, const std::string& path) {
    return client_->waitForSignal("PropertiesChanged", [&](const Signal& signal) {
        return signal.path == path && includes(signal.changes(), expected);
    });
}

json DeviceTest::scan() {
    requestScan();
    EXPECT_TRUE(client_->waitForSignal("ScanDone"));
    return get("BSSs");
}

std::size_t DeviceTest::countCalls(const std::string& member) const {
    const auto calls = device_->calls();
    return static_cast<std::size_t>(
        std::count_if(calls.begin(), calls.end(), [&](const Call& call) { return call.member == member; }));
}

}  // namespace kaz::sim::test
