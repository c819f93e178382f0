#include "inspection/inspect.h"

#include <kaz/util/kaz_config.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <system_error>

#include "inspection/bus_facts.h"
#include "inspection/machine.h"
#include "inspection/nl80211.h"
#include "inspection/supplicant_file.h"

namespace kaz::inspection {
namespace {

namespace fs = std::filesystem;

std::string nameOf(uid_t user) {
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_name : std::to_string(user);
}

std::string choicePath() {
    const char* chosen = ::secure_getenv("KAZ_CONFIG_FILE");
    return chosen != nullptr && *chosen != '\0' ? chosen : util::kazConfigPath;
}

// Of the option -c, whose value may be the rest of its argument or the next one.
std::string configurationIn(const std::vector<std::string>& command) {
    for (std::size_t i = 1; i < command.size(); ++i) {
        if (command[i].starts_with("-c")) {
            return command[i].size() > 2    ? command[i].substr(2)
                   : i + 1 < command.size() ? command[i + 1]
                                            : "";
        }
    }
    return {};
}

// The file that the supplicant uses, or else the one that its unit names.
std::string configurationOf(const Facts& facts) {
    if (facts.supplicant.isKnown() && !facts.supplicant->interfaces.empty() &&
        !facts.supplicant->interfaces.front().configurationFile.empty()) {
        return facts.supplicant->interfaces.front().configurationFile;
    }
    std::string named = facts.unit.isKnown() ? configurationIn(facts.unit->command) : std::string();
    for (const Process& each : facts.supplicants) {
        named = named.empty() ? configurationIn(each.command) : named;
    }
    return named;
}

bool hasRegulatoryDatabase(const fs::path& root) {
    std::error_code error;
    for (const char* path : {"lib/firmware/regulatory.db", "usr/lib/firmware/regulatory.db"}) {
        if (fs::exists(root / path, error)) {
            return true;
        }
    }
    return false;
}

}  // namespace

Places placesOfEnvironment() {
    Places places;
    const char* root = ::secure_getenv("KAZ_DEVICE_ROOT");
    if (root != nullptr && *root != '\0') {
        places.root = root;
        places.kernel = false;
    }
    return places;
}

Facts inspect(const Places& places) {
    Facts facts;
    facts.user = ::geteuid();
    facts.userName = nameOf(facts.user);
    facts.clock = std::chrono::system_clock::now();
    readBus(facts, places.limit);
    readLinks(facts, places.root);
    readProcesses(facts, places.root);
    if (places.kernel) {
        readRadios(facts);
    }
    facts.choiceFile = readChoice(places.root, places.choiceFile.empty() ? choicePath() : places.choiceFile);
    facts.supplicantFilePath = configurationOf(facts);
    if (!facts.supplicantFilePath.empty()) {
        facts.supplicantFile = readSupplicantFile(places.root, facts.supplicantFilePath);
    }
    facts.hasRegulatoryDatabase = hasRegulatoryDatabase(places.root);
    return facts;
}

}  // namespace kaz::inspection
