#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "simulator/bus/scheduler.h"
#include "simulator/supplicant/bss_table.h"
#include "simulator/supplicant/network_list.h"
#include "simulator/supplicant/state.h"
#include "simulator/world/neighbourhood.h"

namespace kaz::sim {

// What the supplicant does with its radio: it scans, picks a network and connects to it.
//
//  1. While there are enabled networks and no connection it scans, again and again, unless it was told to
//     disconnect. Scans that somebody asks for run in any state.
//  2. After a scan it picks the enabled network of the greatest priority that is in range; among those of one
//     priority the strongest BSS counts.
//  3. Connecting passes the states of state.h; each step takes its time. Keys are checked on the way.
//  4. A refused key ends in `disconnected`. The network is then paused, longer after every refusal in a row,
//     and the search goes on.
//  5. A lost connection starts the search again.
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

    // Everything referred to outlives the station. Nothing happens before start().
    Station(const Scheduler& scheduler, const Neighbourhood& neighbourhood, NetworkList& networks,
            Events events);

    void start();

    // False when a scan is already under way. Hidden networks answer when they are among `ssids` or belong to
    // an enabled network with scan_ssid.
    bool scan(std::set<std::string> ssids);

    // Disables all other networks and connects to this one. Nothing more happens when it is the current one.
    void select(Network& network);
    void setEnabled(Network& network, bool enabled);
    void remove(Network& network);

    // False when there is no current network.
    bool disconnect();
    void reconnect();
    bool reassociate();
    void flush(std::chrono::milliseconds age);

    // From outside: the access point sends us away, or is not heard any more.
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

    // The access point we are associated with, as it is now; null without association.
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
    std::optional<unsigned> announced_;  // the current network as the bus knows it
    std::optional<unsigned> bss_;
    std::string authMode_ = "INACTIVE";
    int disconnectReason_ = 0;
    int authStatusCode_ = 0;
    unsigned failures_ = 0;  // to get associated, in a row
    std::optional<std::chrono::milliseconds> lastScan_;

    Timer scanTimer_;
    Timer searchTimer_;
    Timer step_;
    Timer loss_;
};

}  // namespace kaz::sim
