// Callbacks in a program's own poll(2) loop, through an eventfd:
//
//     poll_loop SSID
#include <poll.h>
#include <unistd.h>
#include <wifi/manager.h>

#include <cerrno>
#include <iostream>
#include <string>

#include "session.h"
#include "wakeup.h"

namespace {

// Passes whole lines of standard input to the session. Returns false at the end of the input.
bool readLines(std::string& input, example::Session& session) {
    char bytes[256];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) {
        return count < 0 && errno == EINTR;
    }
    input.append(bytes, static_cast<std::size_t>(count));
    for (auto end = input.find('\n'); end != std::string::npos; end = input.find('\n')) {
        session.enter(input.substr(0, end));
        input.erase(0, end + 1);
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: poll_loop SSID\n";
        return 2;
    }
    // Declared before the Manager, because its callbacks write to the file descriptor until it is destroyed.
    const example::Wakeup changed;
    kaz::wifi::Manager wifi;
    const auto wake = [&changed] {
        changed.signal();
    };  // runs on the Manager's thread, so it does nothing else
    wifi.onEnabledChanged(wake);
    wifi.onScanningChanged(wake);
    wifi.onNetworksListChanged(wake);
    wifi.onConnectionInfoChanged(wake);

    example::Session session(wifi, argv[1]);
    wifi.scan();
    std::string input;
    pollfd watched[] = {{STDIN_FILENO, POLLIN, 0}, {changed.fd(), POLLIN, 0}};
    while (true) {
        if (poll(watched, 2, -1) < 0 && errno != EINTR) {
            return 1;
        }
        if (watched[1].revents != 0) {
            changed.clear();  // before the getters: a later change wakes the loop again
            session.update();
        }
        if (watched[0].revents != 0 && !readLines(input, session)) {
            return 0;
        }
    }
}
