// What the examples for the terminal do, whatever the loop that drives them.
#pragma once

#include <wifi/manager.h>

#include <string>
#include <vector>

namespace example {

// `ssid` in printable ASCII: an SSID is bytes that a stranger chose, and may hold what moves the cursor.
std::string printable(const std::string& ssid);

// Shows the state of the Wi-Fi on standard output, and connects to one WPA2 network. For one thread, that of the
// loop.
class Session {
  public:
    // `wifi` outlives the session.
    Session(kaz::wifi::Manager& wifi, std::string ssid);

    // Prints what is new since the last time. To be called after any of the Manager's callbacks.
    void update();

    // Takes a line that was typed: the passphrase.
    void enter(const std::string& line);

  private:
    kaz::wifi::Manager& wifi_;
    std::string ssid_;
    kaz::wifi::ConnectionInfo connection_;
    std::vector<kaz::wifi::WifiNetwork> networks_;
};

}  // namespace example
