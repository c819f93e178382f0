#include "bench/bss/bss_reader.h"
#include "communicator/bss_rules.h"

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <map>

namespace kaz::bench {
namespace {

using Dictionary = std::map<std::string, sdbus::Variant>;

wifi::WPA_RSN securityOf(const Dictionary& properties, const char* key) {
    wifi::WPA_RSN security;
    const auto found = properties.find(key);
    if (found == properties.end()) {
        return security;
    }
    const auto inner = found->second.get<Dictionary>();
    if (const auto suites = inner.find("KeyMgmt"); suites != inner.end()) {
        for (auto& suite : suites->second.get<std::vector<std::string>>()) {
            security.keyMgmt.insert(std::move(suite));
        }
    }
    if (const auto group = inner.find("Group"); group != inner.end()) {
        security.group = group->second.get<std::string>();
    }
    return security;
}

class SdbusCppReader final : public BssReader {
  public:
    explicit SdbusCppReader(const std::string& busAddress)
        : connection_(sdbus::createSessionBusConnectionWithAddress(busAddress)) {}

    std::vector<Bss> read(const std::vector<std::string>& paths) override {
        std::vector<Bss> read;
        read.reserve(paths.size());
        for (const std::string& path : paths) {
            read.push_back(readOne(path));
        }
        return read;
    }

  private:
    Bss readOne(const std::string& path) {
        Dictionary properties;
        const auto object = sdbus::createProxy(*connection_, supplicantService, path);
        object->callMethod("GetAll")
            .onInterface(propertiesInterface)
            .withArguments(std::string(bssInterface))
            .storeResultsTo(properties);
        wifi::BSSData data;
        data.signal = properties.at("Signal").get<std::int16_t>();
        data.privacy = properties.at("Privacy").get<bool>();
        data.ssid = properties.at("SSID").get<std::vector<std::uint8_t>>();
        data.bssid = {properties.at("BSSID").get<std::vector<std::uint8_t>>()};
        data.frequency = {properties.at("Frequency").get<std::uint16_t>()};
        data.rates = {properties.at("Rates").get<std::vector<std::uint32_t>>()};
        data.mode = {properties.at("Mode").get<std::string>()};
        data.wpa = securityOf(properties, "WPA");
        data.rsn = securityOf(properties, "RSN");
        return wifi::propertiesOfBss(data);
    }

    std::unique_ptr<sdbus::IConnection> connection_;
};

}  // namespace

std::unique_ptr<BssReader> makeSdbusCppReader(const std::string& busAddress) {
    return std::make_unique<SdbusCppReader>(busAddress);
}

}  // namespace kaz::bench
