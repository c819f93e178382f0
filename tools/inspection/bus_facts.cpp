#include "inspection/bus_facts.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <list>
#include <utility>

#include "inspection/bus_queries.h"
#include "inspection/supplicant_file.h"

namespace kaz::inspection {
namespace {

constexpr const char* supplicantService = "fi.w1.wpa_supplicant1";
constexpr const char* supplicantPath = "/fi/w1/wpa_supplicant1";
constexpr const char* systemdService = "org.freedesktop.systemd1";
constexpr const char* unitPath = "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice";
constexpr const char* networkdService = "org.freedesktop.network1";
constexpr const char* polkitService = "org.freedesktop.PolicyKit1";
// The bus lets a connection have 128 calls in flight, so a long list is read by so many at a time.
constexpr std::size_t mostAtOnce = 50;

// The command of the first ExecStart=, which is (path, arguments, ...).
Reader intoCommand(std::vector<std::string>& command) {
    return [&command](sd_bus_message* message) {
        const char* text = nullptr;
        if (sd_bus_message_enter_container(message, 'a', "(sasbttttuii)") <= 0) {
            return false;
        }
        while (sd_bus_message_enter_container(message, 'r', "sasbttttuii") > 0) {
            sd_bus_message_skip(message, "s");
            sd_bus_message_enter_container(message, 'a', "s");
            command.clear();
            while (sd_bus_message_read_basic(message, 's', &text) > 0) {
                command.emplace_back(text);
            }
            sd_bus_message_exit_container(message);
            sd_bus_message_skip(message, "bttttuii");
            sd_bus_message_exit_container(message);
        }
        return sd_bus_message_exit_container(message) >= 0;
    };
}

// The supplicant's texts are in quotes, unless they have other bytes than printable ASCII: then it writes digits.
// On the bus an SSID may also be an array of bytes.
Reader intoSsid(std::optional<std::string>& ssid) {
    return [&ssid](sd_bus_message* message) {
        const void* bytes = nullptr;
        std::size_t size = 0;
        if (sd_bus_message_read_array(message, 'y', &bytes, &size) > 0) {
            ssid = std::string(static_cast<const char*>(bytes), size);
            return true;
        }
        std::string text;
        if (!into(text)(message)) {
            return false;
        }
        ssid = textInFile(text);
        return true;
    };
}

class BusReader {
  public:
    BusReader(Facts& facts, std::chrono::milliseconds limit) : facts_(facts), queries_(limit) {}

    void read() {
        if (!queries_.trouble().empty()) {
            const Unknown none{Obstacle::failed, queries_.trouble()};
            facts_.busNames = none;
            return;
        }
        askNames();
        askUnit();
        askSupplicant();
        askNetworkd();
        askRights();
        queries_.run();
        collect();
    }

  private:
    static bool noArguments(sd_bus_message* /*message*/) { return true; }

    void askNames() {
        queries_.ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames",
                     &noArguments, [this](const Answer& answer) {
                         std::set<std::string> names;
                         const char* name = nullptr;
                         if (answer.message == nullptr) {
                             facts_.busNames = answer.unknown;
                             return;
                         }
                         sd_bus_message_enter_container(answer.message, 'a', "s");
                         while (sd_bus_message_read_basic(answer.message, 's', &name) > 0) {
                             names.insert(name);
                         }
                         facts_.busNames = std::move(names);
                     });
    }

    void askUnit() {
        // systemd loads a unit when somebody reads its properties.
        queries_.askProperties(systemdService, unitPath, "", [this](const Answer& answer) {
            Unit unit;
            facts_.unit = answer.failure<Unit>();
            if (answer.message != nullptr &&
                readProperties(answer.message, {{"LoadState", into(unit.loadState)},
                                                {"ActiveState", into(unit.activeState)},
                                                {"Result", into(unit.result)},
                                                {"Type", into(unit.type)},
                                                {"BusName", into(unit.busName)},
                                                {"MainPID", into(unit.mainPid)},
                                                {"ExecStart", intoCommand(unit.command)},
                                                {"LoadError", [&unit](sd_bus_message* message) {
                                                     return readLoadError(message, unit.loadError);
                                                 }}})) {
                facts_.unit = std::move(unit);
            }
        });
    }

    static bool readLoadError(sd_bus_message* message, std::string& text) {
        const char* name = nullptr;
        const char* words = nullptr;
        if (sd_bus_message_read(message, "(ss)", &name, &words) <= 0) {
            return false;
        }
        text = words;
        return true;
    }

    void askSupplicant() {
        queries_.askProperties(supplicantService, supplicantPath, supplicantService,
                               [this](const Answer& answer) {
                                   facts_.supplicant = answer.failure<Supplicant>();
                                   std::vector<std::string> paths;
                                   if (answer.message != nullptr &&
                                       readProperties(answer.message, {{"Interfaces", into(paths)}})) {
                                       supplicantAnswered_ = true;
                                       for (const std::string& path : paths) {
                                           askInterface(path);
                                       }
                                   }
                               });
    }

    void askInterface(const std::string& path) {
        SupplicantInterface& mine = interfaces_.emplace_back();
        mine.path = path;
        queries_.askProperties(
            supplicantService, path, "fi.w1.wpa_supplicant1.Interface", [this, &mine](const Answer& answer) {
                std::vector<std::string> networks;
                mine.networks = answer.failure<std::vector<Network>>();
                if (answer.message != nullptr &&
                    readProperties(answer.message, {{"Ifname", into(mine.name)},
                                                    {"State", into(mine.state)},
                                                    {"ConfigFile", into(mine.configurationFile)},
                                                    {"Networks", into(networks)}})) {
                    askNetworks(mine, networks);
                }
            });
    }

    void askNetworks(SupplicantInterface& interface, const std::vector<std::string>& paths) {
        auto& mine = networks_[interface.path];
        interface.networks = std::vector<Network>();
        for (const std::string& path : paths) {
            Network& network = mine.emplace_back();
            network.path = path;
            unread_.push_back({&interface, &network});
        }
        for (std::size_t i = 0; i < mostAtOnce; ++i) {
            askNextNetwork();
        }
    }

    void askNextNetwork() {
        if (unread_.empty()) {
            return;
        }
        const Unread next = unread_.front();
        unread_.pop_front();
        queries_.askProperties(
            supplicantService, next.network->path, "fi.w1.wpa_supplicant1.Network",
            [this, next](const Answer& answer) {
                if (answer.message == nullptr && answer.unknown.obstacle == Obstacle::noAnswer) {
                    unread_.push_front(next);
                    return;
                }
                readNetwork(answer, *next.network);
                askNextNetwork();
            });
    }

    // The supplicant shows no key here: it writes an asterisk in its place.
    static void readNetwork(const Answer& answer, Network& network) {
        bool enabled = true;
        if (answer.message == nullptr) {
            return;
        }
        readProperties(answer.message,
                       {{"Enabled", into(enabled)}, {"Properties", [&](sd_bus_message* message) {
                                                         return readNetworkFields(message, network);
                                                     }}});
        network.disabled = !enabled;
    }

    static bool readNetworkFields(sd_bus_message* message, Network& network) {
        std::string keyManagement;
        std::string ca;
        std::string key;
        const bool read = readProperties(message, {{"ssid", intoSsid(network.ssid)},
                                                   {"key_mgmt", into(keyManagement)},
                                                   {"ca_cert", into(ca)},
                                                   {"psk", into(key)}});
        describeKeys(network, keyManagement);
        network.verifiesServer = !ca.empty();
        network.hasKey = !key.empty();
        return read;
    }

    void askNetworkd() {
        queries_.askProperties(networkdService, "/org/freedesktop/network1",
                               "org.freedesktop.network1.Manager", [this](const Answer& answer) {
                                   std::string state;
                                   facts_.onlineState = answer.failure<std::string>();
                                   if (answer.message != nullptr &&
                                       readProperties(answer.message, {{"OnlineState", into(state)}})) {
                                       facts_.onlineState = std::move(state);
                                   }
                               });
    }

    // systemd lets root start units, and asks polkit about everybody else.
    void askRights() {
        if (facts_.user == 0) {
            facts_.mayStartUnits = true;
            return;
        }
        const auto append = [](sd_bus_message* message) {
            return sd_bus_message_append(message, "(sa{sv})sa{ss}us", "unix-process", 2, "pid", "u",
                                         static_cast<unsigned>(::getpid()), "start-time", "t",
                                         std::uint64_t{0}, "org.freedesktop.systemd1.manage-units", 0, 0U,
                                         "") >= 0;
        };
        queries_.ask(polkitService, "/org/freedesktop/PolicyKit1/Authority",
                     "org.freedesktop.PolicyKit1.Authority", "CheckAuthorization", append,
                     [this](const Answer& answer) {
                         facts_.mayStartUnits = answer.failure<bool>();
                         int allowed = 0;
                         if (answer.message != nullptr &&
                             sd_bus_message_enter_container(answer.message, 'r', "bba{ss}") > 0 &&
                             sd_bus_message_read_basic(answer.message, 'b', &allowed) > 0) {
                             facts_.mayStartUnits = allowed != 0;
                         }
                     });
    }

    void collect() {
        if (!supplicantAnswered_) {
            return;
        }
        // A part of the list would look like the whole.
        for (const Unread& each : unread_) {
            each.interface->networks = Unknown{Obstacle::noAnswer, "not all networks were told in time"};
        }
        Supplicant supplicant;
        for (SupplicantInterface& interface : interfaces_) {
            if (interface.networks.isKnown()) {
                const auto& mine = networks_[interface.path];
                interface.networks = std::vector<Network>(mine.begin(), mine.end());
            }
            supplicant.interfaces.push_back(std::move(interface));
        }
        facts_.supplicant = std::move(supplicant);
    }

    struct Unread {
        SupplicantInterface* interface;
        Network* network;
    };

    Facts& facts_;
    std::deque<Unread> unread_;
    // Lists, because the handlers keep references.
    std::list<SupplicantInterface> interfaces_;
    std::map<std::string, std::list<Network>> networks_;
    bool supplicantAnswered_ = false;
    BusQueries queries_;
};

}  // namespace

void readBus(Facts& facts, std::chrono::milliseconds limit) {
    if (const char* address = ::secure_getenv("DBUS_SYSTEM_BUS_ADDRESS")) {
        facts.busAddress = address;
    }
    BusReader(facts, limit).read();
}

}  // namespace kaz::inspection
