#include "inspection/supplicant_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/hex.h"
#include "base/wipe.h"
#include "inspection/text_file.h"

namespace kaz::inspection {
namespace {

constexpr std::array<std::string_view, 3> knownGlobals{"update_config", "country", "sae_pwe"};
constexpr std::array<std::string_view, 5> keyFields{"psk", "sae_password", "password", "wep_key0",
                                                    "private_key"};

// Without a comment, unless the value is in quotes.
std::string_view unquotedValue(std::string_view value) {
    const bool quoted = value.starts_with('"') || value.starts_with("P\"");
    return quoted ? value : trimmed(value.substr(0, value.find('#')));
}

class SettingsReader {
  public:
    SupplicantFile::Settings read(std::string_view text) {
        int number = 0;
        while (!text.empty() && !settings_.badLine) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            ++number;
            if (!readLine(trimmed(text.substr(0, end)))) {
                settings_.badLine = number;
            }
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        if (!block_.empty() && !settings_.badLine) {
            settings_.badLine = number;  // a block has no end
        }
        return std::move(settings_);
    }

  private:
    bool readLine(std::string_view line) {
        if (line.empty() || line.starts_with('#')) {
            return true;
        }
        if (line == "}") {
            return !std::exchange(block_, {}).empty();
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            return block_ == "blob";
        }
        const std::string_view key = trimmed(line.substr(0, equals));
        const std::string_view value = trimmed(line.substr(equals + 1));
        if (block_.empty()) {
            return readGlobal(key, value);
        }
        if (block_ == "network") {
            readField(settings_.networks.back(), key, unquotedValue(value));
        }
        return true;
    }

    bool readGlobal(std::string_view key, std::string_view value) {
        if (value == "{") {
            block_ = key.starts_with("blob") ? "blob" : key;
            if (key == "network") {
                settings_.networks.emplace_back();
            }
        } else if (std::find(knownGlobals.begin(), knownGlobals.end(), key) != knownGlobals.end()) {
            settings_.globals.insert_or_assign(std::string(key), std::string(unquotedValue(value)));
        }
        return !key.empty();
    }

    static void readField(Network& network, std::string_view key, std::string_view value) {
        if (key == "ssid") {
            network.ssid = textInFile(value);
        } else if (key == "key_mgmt") {
            describeKeys(network, value);
        } else if (key == "disabled") {
            network.disabled = value == "1";
        } else if (key == "ca_cert" || key == "ca_path") {
            network.verifiesServer = true;
        } else if (std::find(keyFields.begin(), keyFields.end(), key) != keyFields.end()) {
            network.hasKey = true;
        }
    }

    SupplicantFile::Settings settings_;
    std::string block_;  // "network" between its braces
};

}  // namespace

std::optional<std::string> textInFile(std::string_view value) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        return std::string(value.substr(1, value.size() - 2));
    }
    return fromHex(value);
}

void describeKeys(Network& network, std::string_view keyManagement) {
    network.usesSae = keyManagement.find("SAE") != std::string_view::npos;
    network.isEnterprise = keyManagement.find("WPA-EAP") != std::string_view::npos ||
                           keyManagement.find("IEEE8021X") != std::string_view::npos;
}

SupplicantFile::Settings settingsIn(std::string_view text) {
    return SettingsReader().read(text);
}

namespace {

Fact<SupplicantFile::Settings> settingsOf(const std::filesystem::path& path) {
    Fact<std::string> text = textOf(path);
    if (!text.isKnown()) {
        return text.isAbsent() ? Unknown{Obstacle::failed, "the file disappeared"} : text.unknown();
    }
    const WipedString owner(text.take());
    return settingsIn(owner.get());
}

}  // namespace

Fact<SupplicantFile> readSupplicantFile(const std::filesystem::path& root,
                                        const std::filesystem::path& path) {
    const std::filesystem::path real = root / path.relative_path();
    struct stat status {};
    if (::stat(real.c_str(), &status) != 0) {
        return failureOf<SupplicantFile>(errno);
    }
    SupplicantFile file;
    file.path = path;
    file.owner = status.st_uid;
    file.mode = status.st_mode & 07777U;
    file.folderIsWritable = ::access(real.parent_path().c_str(), W_OK) == 0;
    file.settings = settingsOf(real);
    return file;
}

}  // namespace kaz::inspection
