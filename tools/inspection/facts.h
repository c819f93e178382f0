// What is so on a device. No fact contains a passphrase, a key or an identity.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "inspection/fact.h"

namespace kaz::inspection {

// The supplicant's unit, as systemd sees it. The texts are systemd's own words.
struct Unit {
    std::string loadState;  // "loaded", "not-found", "masked", "bad-setting", "error"
    std::string loadError;
    std::string activeState;  // "active", "inactive", "failed", "activating"
    std::string result;       // "success", "exit-code", "start-limit-hit"
    std::string type;         // "dbus"
    std::string busName;
    std::vector<std::string> command;  // of ExecStart=, with the program's name
    std::uint32_t mainPid = 0;
};

// A network that the supplicant knows: its structure, without a key or an identity.
struct Network {
    std::optional<std::string> ssid;  // bytes
    bool disabled = false;
    bool hasKey = false;
    bool usesSae = false;
    bool isEnterprise = false;
    bool verifiesServer = false;  // by a CA
    std::string path;             // on the bus; empty in a file
};

// An interface that the supplicant uses.
struct SupplicantInterface {
    std::string path;
    std::string name;   // "wlan0"; empty if it was not told
    std::string state;  // "completed"
    std::string configurationFile;
    Fact<std::vector<Network>> networks;
};

struct Supplicant {
    std::vector<SupplicantInterface> interfaces;  // the first one is the one that the library uses
};

// The supplicant's configuration file.
struct SupplicantFile {
    std::filesystem::path path;
    uid_t owner = 0;
    mode_t mode = 0;
    bool folderIsWritable = false;
    struct Settings {
        std::map<std::string, std::string>
            globals;  // those that this room knows: update_config, country, sae_pwe
        std::vector<Network> networks;
        std::optional<int> badLine;  // the supplicant refuses the file for it
    };
    Fact<Settings> settings;
};

// The file with the user's choice of Wi-Fi on or off.
struct ChoiceFile {
    std::filesystem::path path;
    Fact<std::string> choice;  // the value of "wifi"; absent: on
    int writeError = 0;        // errno of a write that would fail; 0: it would not
};

struct Process {
    pid_t pid = 0;
    std::string name;
    std::vector<std::string> command;
    bool isStopped = false;  // by a signal or a debugger
};

// Why the kernel keeps a radio silent.
struct RadioSwitch {
    std::filesystem::path path;  // /sys/class/rfkill/rfkill0
    bool soft = false;           // a program did
    bool hard = false;           // a switch on the device did
};

// What networkd knows of a link, in its own words.
struct ManagedLink {
    std::string setupState;   // "configured", "unmanaged"
    std::string onlineState;  // "online", "offline"
    std::filesystem::path networkFile;
    bool requiredForOnline = true;
    std::map<std::string, std::string>
        settings;  // "Network/DHCP" of that file and its drop-ins: those of interest
};

struct Link {
    std::string name;
    int index = 0;
    bool isWireless = false;
    bool isUp = false;
    std::string phy;  // "phy0"
    std::vector<RadioSwitch> switches;
    Fact<ManagedLink> managed;
    Fact<bool> powerSave;
};

struct Facts {
    uid_t user = 0;
    std::string userName;
    std::chrono::system_clock::time_point clock;
    std::optional<std::string> busAddress;  // where the environment says that the bus is

    Fact<std::set<std::string>> busNames;  // unknown: the bus cannot be used
    Fact<Unit> unit;
    Fact<bool> mayStartUnits;
    Fact<Supplicant> supplicant;    // absent: not on the bus
    Fact<std::string> onlineState;  // networkd's; absent: networkd is not on the bus

    ChoiceFile choiceFile;
    std::filesystem::path supplicantFilePath;  // empty if nothing names it
    Fact<SupplicantFile> supplicantFile;       // absent: no such file
    std::vector<Process> supplicants;          // processes of wpa_supplicant that can see our interfaces
    std::vector<Process> rivals;               // other programs that manage wireless interfaces
    std::vector<Link> links;
    std::vector<std::string> phys;  // the radios, also those without an interface
    Fact<std::string> country;      // of the kernel; "00" is the world
    bool hasRegulatoryDatabase = false;
};

}  // namespace kaz::inspection
