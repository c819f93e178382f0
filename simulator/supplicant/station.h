#pragma once

#include "simulator/bus/scheduler.h"
#include "simulator/supplicant/bss_table.h"
#include "simulator/supplicant/network_list.h"
#include "simulator/supplicant/state.h"
#include "simulator/world/neighbourhood.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

namespace kaz::sim {

// What the supplicant does with its radio: it scans, selects a network and connects to it.
//
//  1. While there are enabled networks and no connection, it scans repeatedly, except after a Disconnect.
//     Requested scans run in any state.
//  2. After a scan it selects the enabled network in range with the greatest priority, and among equal
//     priorities the one with the strongest BSS.
//  3. Connecting passes through the states of state.h. Each step takes time, and keys are checked on the way.
//  4. A refused key leads to `disconnected`. The network is then paused, longer after each refusal in a row,
//     and the search continues.
//  5. After the loss of a connection the search starts again.
class Station {
  public:
    struct Events {
        std::function<void(const char* property)> changed;  // of the interface object
        std::function<void(bool success)> scanDone;
        std::function<void(const Network&)> networkSelected;
        std::function<void(const Network&)> enabledChanged;
        std::function<void(const std::string& status, const std::string& parameter)> eap;
        BssTable::Events bss;
    };

    // All references must outlive the station. Nothing happens before start().
    Station(const Scheduler& scheduler, const Neighbourhood& neighbourhood, NetworkList& networks,
            Events events);

    void start();

    // Returns false if a scan is in progress. Hidden access points answer if their SSID is in `ssids` or
    // belongs to an enabled network with scan_ssid.
    bool scan(std::set<std::string> ssids);

    // Disables all other networks. Connects to this one if it is not the current one.
    void select(Network& network);
    void setEnabled(Network& network, bool enabled);
    void remove(Network& network);

    // Returns false if there is no current network.
    bool disconnect();
    void reconnect();
    bool reassociate();
    void flush(std::chrono::milliseconds age);

    // From outside: the access point disconnects the station, or goes silent.
    void deauthenticated(int reason);
    void connectionLost();
    void accessPointsChanged();

    State state() const noexcept { return state_; }
    bool scanning() const noexcept { return scanning_; }
    const Network* currentNetwork() const { return current_ ? networks_.find(*current_) : nullptr; }
    const Bss* currentBss() const { return bss_ ? table_.find(*bss_) : nullptr; }
    const std::string& authMode() const noexcept { return authMode_; }
    int disconnectReason() const noexcept { return disconnectReason_; }
    int authStatusCode() const noexcept { return authStatusCode_; }
    const BssTable& bsss() const noexcept { return table_; }

    // The current state of the associated access point; null without association.
    const AccessPoint* associatedWith() const;

  private:
    struct Candidate {
        unsigned network;
        unsigned bss;
    };

    // station_search.cpp
    void searchAfter(std::chrono::milliseconds delay);
    void search();
    void finishScan(const std::set<std::string>& ssids);
    void useScanResults();
    std::optional<Candidate> pick() const;
    const Bss* strongestFor(const Network& network) const;
    bool tryable(const Network& network) const;
    bool anyEnabled() const;
    bool connecting() const { return state_ >= State::authenticating; }

    // station_connect.cpp
    void connect(const Candidate& candidate);
    void stepAfter(std::chrono::milliseconds delay, void (Station::*step)());
    void associate();
    void associated();
    void authenticateByEap();
    void handshake();
    void groupHandshake();
    void completed();
    void refused(int reason);
    void refusedAtAuthentication(int status);
    void pause(Network& network);
    void leave(int reason);
    void forgetConnection();
    void setState(State state);
    void setCurrentNetwork(std::optional<unsigned> id);
    const AccessPoint* reachedAccessPoint() const;

    const Scheduler& scheduler_;
    const Neighbourhood& neighbourhood_;
    NetworkList& networks_;
    Events events_;
    BssTable table_;

    State state_ = State::disconnected;
    bool scanning_ = false;
    bool toldToDisconnect_ = false;
    std::optional<unsigned> current_;
    std::optional<unsigned> announced_;  // the current network as published on the bus
    std::optional<unsigned> bss_;
    std::string authMode_ = "INACTIVE";
    int disconnectReason_ = 0;
    int authStatusCode_ = 0;
    unsigned failures_ = 0;  // failed associations in a row
    std::optional<std::chrono::milliseconds> lastScan_;

    Timer scanTimer_;
    Timer searchTimer_;
    Timer step_;
    Timer loss_;
};

}  // namespace kaz::sim
