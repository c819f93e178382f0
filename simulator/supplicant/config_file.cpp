#include "simulator/supplicant/config_file.h"

#include <fstream>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace kaz::sim {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Reads up to the closing brace. Empty if a field was refused.
std::optional<NetworkConfig> readNetwork(std::istream& in, const std::vector<std::string>& eapMethods) {
    NetworkConfig network;
    bool valid = true;
    for (std::string line; std::getline(in, line);) {
        const std::string_view text = trimmed(line);
        if (text == "}") {
            break;
        }
        const auto equals = text.find('=');
        if (equals != std::string_view::npos) {
            valid = network.setText(text.substr(0, equals), text.substr(equals + 1), eapMethods) && valid;
        }
    }
    return valid ? std::optional(std::move(network)) : std::nullopt;
}

}  // namespace

SavedConfig readConfig(const std::filesystem::path& file, const std::vector<std::string>& eapMethods) {
    std::ifstream in(file);
    if (!in) {
        throw std::runtime_error("cannot read " + file.string());
    }
    SavedConfig config{.updateConfig = false, .country = {}, .networks = {}};
    for (std::string line; std::getline(in, line);) {
        const std::string_view text = trimmed(line);
        if (text == "update_config=1") {
            config.updateConfig = true;
        } else if (text.starts_with("country=")) {
            config.country = text.substr(text.find('=') + 1);
        } else if (text == "network={") {
            if (auto network = readNetwork(in, eapMethods)) {
                config.networks.push_back(std::move(*network));
            }
        }
    }
    return config;
}

void writeConfig(const std::filesystem::path& file, const SavedConfig& config) {
    const std::filesystem::path fresh = file.string() + ".tmp";
    std::ofstream out(fresh, std::ios::trunc);
    out << "update_config=" << (config.updateConfig ? 1 : 0) << '\n';
    out << (config.country.empty() ? "" : "country=" + config.country + '\n');
    for (const NetworkConfig& network : config.networks) {
        out << "\nnetwork={\n";
        for (const auto& [name, value] : network.stored()) {
            out << '\t' << name << '=' << value << '\n';
        }
        out << "}\n";
    }
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + fresh.string());
    }
    std::filesystem::rename(fresh, file);
}

}  // namespace kaz::sim
