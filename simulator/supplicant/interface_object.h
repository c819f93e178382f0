#pragma once

#include "simulator/bus/values.h"
#include "simulator/supplicant/bss_object.h"
#include "simulator/supplicant/config_file.h"
#include "simulator/supplicant/network_object.h"
#include "simulator/supplicant/station.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace kaz::sim {

// The supplicant's network interface on the bus, with its networks and BSSs.
class InterfaceObject {
  public:
    static constexpr const char* interface = "fi.w1.wpa_supplicant1.Interface";

    // What the supplicant keeps across a restart.
    struct Storage {
        std::filesystem::path file;  // the target of SaveConfig; may be empty
        SavedConfig config;
    };

    // All references must outlive this. Starts with the stored networks.
    InterfaceObject(Connection& connection, const Scheduler& scheduler, const Neighbourhood& neighbourhood,
                    Storage& storage, std::string path, std::function<void()> stateChanged);

    void start() { station_.start(); }
    const std::string& path() const noexcept { return path_; }
    Station& station() noexcept { return station_; }
    NetworkList& networks() noexcept { return networks_; }

    // Signals the removal of all networks, as the daemon does when it removes the interface.
    void withdraw();

    // Sends this number of PropertiesChanged signals of the interface as fast as possible.
    void storm(unsigned signals);

    // All properties of this object, for signals that other objects send.
    const PropertySource& properties() const noexcept { return properties_.source(); }

  private:
    static const sd_bus_vtable vtable_[];

    // interface_methods.cpp
    void scan(sd_bus_message* call);
    Dictionary signalPoll() const;
    ObjectPath addNetwork(const Settings& settings);
    void removeAllNetworks();
    void saveConfig();
    Network& networkAt(const ObjectPath& wanted);
    void remove(Network& network);

    Station::Events stationEvents();
    Network& publish(NetworkConfig config);
    void changed(const char* property);
    // A signal that cannot be sent is dropped: the radio continues without the bus.
    template <typename... Arguments>
    void emit(const char* member, const char* types, Arguments... arguments);
    void emitAdded(const char* member, const PropertySource& object);
    std::string bssPath(unsigned id) const;

    std::string path_;
    Connection& connection_;
    const Scheduler& scheduler_;
    const Neighbourhood& neighbourhood_;
    Storage& storage_;
    std::function<void()> stateChanged_;
    NetworkList networks_;
    std::map<unsigned, std::unique_ptr<NetworkObject>> networkObjects_;
    std::map<unsigned, std::unique_ptr<BssObject>> bssObjects_;
    PropertySignals properties_;
    Station station_;
    Slot slot_;
};

}  // namespace kaz::sim
