// The Wi-Fi in a program's own poll(2) loop:
//
//     poll_loop SSID
#include <poll.h>
#include <unistd.h>
#include <wifi/client/follower.h>

#include <cerrno>
#include <iostream>
#include <string>

#include "session.h"

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
    kaz::wifi::client::Follower wifi;
    example::Session session(wifi.manager(), argv[1]);
    wifi.manager().scan();
    std::string input;
    pollfd watched[] = {{STDIN_FILENO, POLLIN, 0}, {wifi.fd(), POLLIN, 0}};
    while (true) {
        if (poll(watched, 2, -1) < 0 && errno != EINTR) {
            return 1;
        }
        if (const auto now = wifi.takeNewest()) {
            session.show(*now);
        }
        if (watched[0].revents != 0 && !readLines(input, session)) {
            return 0;
        }
    }
}
