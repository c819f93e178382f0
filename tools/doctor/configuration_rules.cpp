// The supplicant's configuration file, and the networks that the supplicant knows.
#include <fmt/format.h>

#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {
namespace {

using inspection::Network;
using inspection::SupplicantFile;

// Sets a line of the configuration outside all blocks.
std::string setting(const SupplicantFile& file, const std::string& key, const std::string& value) {
    const std::string path = word(file.path.string());
    const bool there = file.settings.isKnown() && file.settings->globals.contains(key);
    return (there ? fmt::format("sed -i 's/^{0}=.*/{0}={1}/' {2}", key, value, path)
                  : fmt::format("printf '\\n%s\\n' {}={} >> {}", key, value, path)) +
           " && " + restartUnit;
}

void examineAccess(Examination& examination, const SupplicantFile& file) {
    const std::string path = file.path.string();
    if ((file.mode & 077U) != 0) {
        // The supplicant makes a new file when it saves, so the mode alone would not last.
        examination.doubtful(Link::configuration, path + " has passwords, and other users may read it",
                             fmt::format("chmod 600 {} && {}", word(path),
                                         dropIn("zz-kazwifi-umask.conf", {"[Service]", "UMask=0077"})));
    }
    if (file.owner != 0) {
        examination.doubtful(Link::configuration, path + " does not belong to root",
                             "chown root: " + word(path));
    }
    if (!file.folderIsWritable && examination.facts().user == 0) {
        examination.broken(Link::configuration,
                           path + " is in a folder that cannot be written, so no network is saved",
                           fmt::format("mount -o remount,rw \"$(stat --format=%m {})\"",
                                       word(file.path.parent_path().string())));
    }
}

void examineSettings(Examination& examination, const SupplicantFile& file) {
    const std::string path = file.path.string();
    const SupplicantFile::Settings& settings = *file.settings;
    const auto update = settings.globals.find("update_config");
    if (settings.badLine) {
        examination.broken(Link::configuration,
                           fmt::format("line {} of {} is not valid, so wpa_supplicant refuses the file",
                                       *settings.badLine, path),
                           fmt::format("sed -i '{}s/^/#/' {} && systemctl reset-failed {} && {}",
                                       *settings.badLine, word(path), supplicantUnit, restartUnit));
    } else if (update == settings.globals.end() || update->second != "1") {
        examination.broken(Link::configuration, path + " has no update_config=1, so no network is saved",
                           setting(file, "update_config", "1"));
    }
}

// The networks in use, or else those in the file.
const std::vector<Network>* networksOf(const inspection::Facts& facts) {
    if (facts.supplicant.isKnown() && !facts.supplicant->interfaces.empty() &&
        facts.supplicant->interfaces.front().networks.isKnown()) {
        return &*facts.supplicant->interfaces.front().networks;
    }
    const bool inFile = facts.supplicantFile.isKnown() && facts.supplicantFile->settings.isKnown();
    return inFile ? &facts.supplicantFile->settings->networks : nullptr;
}

template <typename Condition>
std::vector<std::string> namesOf(const std::vector<Network>& networks, const Condition& condition) {
    std::vector<std::string> names;
    for (const Network& each : networks) {
        if (condition(each)) {
            names.push_back(each.ssid.value_or(""));
        }
    }
    return names;
}

void examineNameless(Examination& examination, const std::vector<Network>& networks) {
    for (const Network& each : networks) {
        if (each.ssid && !each.ssid->empty()) {
            continue;
        }
        std::string remedy;
        if (!each.path.empty()) {
            const std::string& interface = examination.facts().supplicant->interfaces.front().path;
            const std::string call =
                "busctl call fi.w1.wpa_supplicant1 " + interface + " fi.w1.wpa_supplicant1.Interface ";
            remedy = fmt::format("{0}RemoveNetwork o {1} && {0}SaveConfig", call, each.path);
        }
        examination.doubtful(Link::networks, "a configured network has no name, so wpa_supplicant takes any",
                             remedy);
    }
}

// While an attempt runs, the others are disabled on purpose.
bool attemptMayRun(const inspection::Facts& facts) {
    if (!facts.supplicant.isKnown() || facts.supplicant->interfaces.empty()) {
        return false;
    }
    const std::string& state = facts.supplicant->interfaces.front().state;
    return state != "completed" && state != "disconnected" && state != "inactive";
}

void examineDisabled(Examination& examination, const std::vector<Network>& networks) {
    const inspection::Facts& facts = examination.facts();
    const auto isDisabled = [](const Network& each) { return each.disabled; };
    if (facts.supplicantFile.isKnown() && facts.supplicantFile->settings.isKnown()) {
        std::vector<std::string> saved = namesOf(facts.supplicantFile->settings->networks, isDisabled);
        if (!saved.empty()) {
            const std::string path = word(facts.supplicantFile->path.string());
            examination.doubtful(Link::networks, "saved networks are disabled, so they are never used",
                                 "sed -i '/^[[:space:]]*disabled=1/d' " + path + " && " + restartUnit,
                                 std::move(saved));
            return;
        }
    }
    std::vector<std::string> now = namesOf(networks, isDisabled);
    if (!now.empty() && !attemptMayRun(facts)) {
        examination.doubtful(Link::networks, "a program has disabled networks and did not enable them again",
                             restartUnit, std::move(now));
    }
}

void examineSae(Examination& examination, const std::vector<Network>& networks) {
    const inspection::Facts& facts = examination.facts();
    std::vector<std::string> names = namesOf(networks, [](const Network& each) { return each.usesSae; });
    if (!facts.supplicantFile.isKnown() || !facts.supplicantFile->settings.isKnown()) {
        examination.notLookedAt(Link::sae, "wpa_supplicant's configuration cannot be read");
        return;
    }
    const auto& globals = facts.supplicantFile->settings->globals;
    const auto found = globals.find("sae_pwe");
    if (!names.empty() && (found == globals.end() || found->second == "0")) {
        examination.doubtful(Link::sae,
                             "sae_pwe is 0, so access points that demand hash-to-element refuse the device",
                             setting(*facts.supplicantFile, "sae_pwe", "2"), std::move(names));
    }
    examination.ok(Link::sae, "nothing limits WPA3");
}

void examineEnterprise(Examination& examination, const std::vector<Network>& networks) {
    std::vector<std::string> names =
        namesOf(networks, [](const Network& each) { return each.isEnterprise && !each.verifiesServer; });
    if (!names.empty()) {
        examination.doubtful(
            Link::enterprise, "the server is not verified, so a false access point could get the password",
            "kazwifictl connect SSID --identity NAME --ca-file FILE --domain NAME", std::move(names));
    }
    examination.ok(Link::enterprise, "the servers of all enterprise networks are verified");
}

}  // namespace

void examineConfiguration(Examination& examination) {
    const inspection::Facts& facts = examination.facts();
    if (facts.supplicantFile.isAbsent()) {
        const std::string path = word(facts.supplicantFilePath.string());
        examination.broken(
            Link::configuration, "wpa_supplicant's configuration is missing: " + path,
            fmt::format("mkdir -p {} && install -m 600 /dev/null {} && printf '%s\\n' "
                        "ctrl_interface=/run/wpa_supplicant update_config=1 > {} && {}",
                        word(facts.supplicantFilePath.parent_path().string()), path, path, restartUnit));
        return;
    }
    if (facts.supplicantFile.isUnknown()) {
        examination.notLookedAt(Link::configuration, facts.supplicantFile.is(inspection::Obstacle::notLooked)
                                                         ? "no configuration file is known"
                                                         : facts.supplicantFile.why());
        return;
    }
    examineAccess(examination, *facts.supplicantFile);
    if (facts.supplicantFile->settings.isKnown()) {
        examineSettings(examination, *facts.supplicantFile);
    } else {
        examination.notLookedAt(Link::configuration, "the content of " + facts.supplicantFile->path.string() +
                                                         ": " + facts.supplicantFile->settings.why());
    }
    examination.ok(Link::configuration, "wpa_supplicant can save networks, and nobody else can read them");
}

void examineNetworks(Examination& examination) {
    const std::vector<Network>* networks = networksOf(examination.facts());
    if (networks == nullptr) {
        for (const Link link : {Link::networks, Link::sae, Link::enterprise}) {
            examination.notLookedAt(link, "wpa_supplicant's networks cannot be read");
        }
        return;
    }
    examineNameless(examination, *networks);
    examineDisabled(examination, *networks);
    examination.ok(Link::networks, "all configured networks can be used");
    examineSae(examination, *networks);
    examineEnterprise(examination, *networks);
}

}  // namespace kaz::doctor
