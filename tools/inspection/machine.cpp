#include "inspection/machine.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "inspection/text_file.h"

namespace kaz::inspection {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 5> rivalNames{"NetworkManager", "iwd", "connmand", "dhcpcd", "wicked"};

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

int numberIn(const std::string& text) {
    return isNumber(text) && text.size() < 10 ? std::stoi(text) : 0;
}

std::vector<RadioSwitch> switchesOf(const fs::path& root, const fs::path& interface) {
    std::vector<RadioSwitch> switches;
    const fs::path phy = interface / "phy80211";
    for (const std::string& name : namesIn(phy)) {
        if (name.starts_with("rfkill")) {
            switches.push_back({fs::path("/sys/class/rfkill") / name, firstLineOf(phy / name / "soft") == "1",
                                firstLineOf(phy / name / "hard") == "1"});
        }
    }
    static_cast<void>(root);
    return switches;
}

// networkd's settings for a link are in a file and in the drop-ins beside it, which every folder may have.
std::map<std::string, std::string> networkSettings(const fs::path& root, const fs::path& file) {
    std::map<std::string, fs::path> files;
    for (const char* folder : {"usr/lib/systemd/network", "run/systemd/network", "etc/systemd/network"}) {
        const fs::path dropIns = root / folder / (file.filename().string() + ".d");
        for (const std::string& name : namesIn(dropIns)) {
            files[name] = dropIns / name;
        }
    }
    std::map<std::string, std::string> settings = entriesOf(textOr(root / file.relative_path()));
    for (const auto& [name, path] : files) {
        for (const auto& [key, value] : entriesOf(textOr(path))) {
            settings[key] = value;
        }
    }
    return settings;
}

Fact<ManagedLink> managedLink(const fs::path& root, int index) {
    const Fact<std::string> text = textOf(root / "run/systemd/netif/links" / std::to_string(index));
    if (!text.isKnown()) {
        return text.isAbsent() ? Fact<ManagedLink>::absent() : Fact<ManagedLink>(text.unknown());
    }
    std::map<std::string, std::string> entries = entriesOf(*text);
    ManagedLink link;
    link.setupState = entries["ADMIN_STATE"];
    link.onlineState = entries["ONLINE_STATE"];
    link.networkFile = entries["NETWORK_FILE"];
    link.requiredForOnline = entries["REQUIRED_FOR_ONLINE"] != "no";
    if (!link.networkFile.empty()) {
        link.settings = networkSettings(root, link.networkFile);
    }
    return link;
}

// In another network namespace a program manages other interfaces. Unknown namespaces are taken for ours.
bool isElsewhere(const fs::path& process, const fs::path& ours) {
    std::error_code error;
    const fs::path mine = fs::read_symlink(ours, error);
    const fs::path other = fs::read_symlink(process / "ns/net", error);
    return !mine.empty() && !other.empty() && mine != other;
}

// "1234 (name) T ...": the name may contain anything.
bool isStopped(const std::string& status) {
    const std::size_t end = status.rfind(") ");
    return end != std::string::npos && (status.substr(end + 2, 1) == "T" || status.substr(end + 2, 1) == "t");
}

// errno of a replacement of the file that would fail. A missing file and its folders would be made.
int writeErrorOf(const fs::path& root, const fs::path& path) {
    std::error_code error;
    const fs::path file = root / path.relative_path();
    if (fs::is_directory(file, error)) {
        return EISDIR;
    }
    fs::path folder = file.parent_path();
    while (!fs::exists(folder, error) && folder != folder.parent_path()) {
        folder = folder.parent_path();
    }
    return ::access(folder.c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

}  // namespace

void readLinks(Facts& facts, const fs::path& root) {
    const fs::path folder = root / "sys/class/net";
    for (const std::string& name : namesIn(folder)) {
        std::error_code error;
        Link link;
        link.name = name;
        link.index = numberIn(firstLineOf(folder / name / "ifindex"));
        link.isWireless = fs::exists(folder / name / "phy80211", error);
        link.phy = firstLineOf(folder / name / "phy80211/name");
        link.isUp =
            (std::strtoul(firstLineOf(folder / name / "flags").c_str(), nullptr, 16) & 1U) != 0;  // IFF_UP
        link.switches = switchesOf(root, folder / name);
        link.managed = managedLink(root, link.index);
        facts.links.push_back(std::move(link));
    }
    facts.phys = namesIn(root / "sys/class/ieee80211");
}

void readProcesses(Facts& facts, const fs::path& root) {
    const fs::path folder = root / "proc";
    for (const std::string& number : namesIn(folder)) {
        if (!isNumber(number)) {
            continue;
        }
        Process process;
        process.name = firstLineOf(folder / number / "comm");
        const bool rival = std::find(rivalNames.begin(), rivalNames.end(), process.name) != rivalNames.end();
        if ((process.name != "wpa_supplicant" && !rival) ||
            isElsewhere(folder / number, folder / "self/ns/net")) {
            continue;
        }
        process.pid = numberIn(number);
        process.command = split(textOr(folder / number / "cmdline"), '\0');
        process.isStopped = isStopped(textOr(folder / number / "stat"));
        (rival ? facts.rivals : facts.supplicants).push_back(std::move(process));
    }
}

ChoiceFile readChoice(const fs::path& root, const fs::path& path) {
    ChoiceFile file;
    file.path = path;
    file.writeError = writeErrorOf(root, path);
    const Fact<std::string> text = textOf(root / path.relative_path());
    if (!text.isKnown()) {
        file.choice = text;
        return file;
    }
    const std::map<std::string, std::string> entries = entriesOf(*text);
    const auto found = entries.find("wifi");
    file.choice = found == entries.end() ? Fact<std::string>::absent() : Fact(found->second);
    return file;
}

}  // namespace kaz::inspection
