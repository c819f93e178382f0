// A Manager that works with the wpa_supplicant daemon itself, over a bus on which calls fail.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "doubles/recording_log/recording_log.h"
#include "manager/manager_impl.h"
#include "support/bus_proxy/bus_proxy.h"

namespace kaz::test {

// The daemon has a wire, and systemd and networkd are simulated. The daemons are started once per process; each test has
// its own Manager. Before a test the configuration knows only the network "Old".
class FaultyWire : public testing::Test {
  public:
    FaultyWire();
    ~FaultyWire() override;

    static constexpr const char* passphrase = "a secret that nobody sees";

    // What may come before a fault, request the call that gets it, or end its effect.
    void attach();
    void startAttached();
    void startConnected();
    void startSwitchedOff();
    void scan() { manager().scan(); }
    void connectWithSecret();
    void connectWire();
    void connectConfigured() { manager().connectConfigured("Old"); }
    void disconnect() { manager().disconnect(); }
    void forgetWire() { manager().forgetNetwork("Wire"); }
    void pollSignal();
    void switchOff() { manager().setEnabled(false); }
    void switchOn() { manager().setEnabled(true); }
    void switchOffAndOn();
    void switchOffAndOnOnceAttached();

  protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    wifi::ManagerImpl& manager();
    static BusProxy& proxy();
    bool isAttached();
    bool offersItsMethods();

    // A passphrase must be in no record that is forgotten.
    void forgetLog();

    // A warning or an error, with one of these causes.
    bool isToldOf(const std::string& text, const std::vector<std::string>& causes) const;

    // How many networks the supplicant does not use.
    static unsigned disabledNetworks();

    // The loop neither spins nor waits for a reply for ever.
    void comesToRest();
    void worksAgain();
    void saysTheSameAsANewManager();
    void forgetAllButOld();

    RecordingLog log;

  private:
    struct Surroundings;
    struct User;

    // The supplicant's configuration file. Every block of it is whole.
    struct SavedFile {
        std::multiset<std::string> networks;  // their SSIDs
        bool allEnabled = true;
    };
    static SavedFile saved();

    void switchOffAndWait();
    void connectOpen(const std::string& ssid);
    void disconnectAndSave(const std::string& ssid);
    void forget(const std::string& ssid);

    std::unique_ptr<User> user_;

    static std::string whyNot_;
    static std::unique_ptr<Surroundings> surroundings_;
};

}  // namespace kaz::test
