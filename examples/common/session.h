// What the terminal examples do, in any event loop.
#pragma once

#include <wifi/client/follower.h>

#include <string>
#include <vector>

namespace example {

// `ssid` in printable ASCII. An SSID is bytes that a stranger chose, and may contain terminal escape sequences.
std::string printable(const std::string& ssid);

// Prints the state of the Wi-Fi and connects to one WPA2 network. To be used on the loop's thread only.
class Session {
  public:
    // `wifi` must outlive the session.
    Session(kaz::wifi::Manager& wifi, std::string ssid);

    // Prints what changed since the last call.
    void show(const kaz::wifi::client::Snapshot& now);

    // Handles a line of input: the passphrase.
    void enter(const std::string& line);

  private:
    kaz::wifi::Manager& wifi_;
    std::string ssid_;
    kaz::wifi::ConnectionDetails connection_;
    std::vector<kaz::wifi::WifiNetwork> networks_;
};

}  // namespace example
