// The process whose memory is searched: a Manager, and a thread that does what it reads from its standard input, a
// socket. Each request is answered with a byte.
#include "base/non_copyable.h"

#include "base/wipe.h"
#include "support/wifi_user/wifi_user.h"

#include <spdlog/spdlog.h>

#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kaz::test {
namespace {

class Holder : NonCopyable {
  public:
    Holder() { spdlog::set_level(spdlog::level::trace); }
    ~Holder() { unblock(); }

    void serve() {
        for (;;) {
            const ssize_t count = ::recv(STDIN_FILENO, packet_.data(), packet_.size(), 0);
            if (count <= 0) {
                return;
            }
            rest_ = std::string_view(packet_.data(), static_cast<std::size_t>(count));
            const char answer = obey(next());
            ::explicit_bzero(packet_.data(), packet_.size());
            ::send(STDIN_FILENO, &answer, 1, MSG_NOSIGNAL);
        }
    }

  private:
    // The next line of the request.
    std::string_view next() {
        const std::size_t end = rest_.find('\n');
        const std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return line;
    }

    char obey(std::string_view request) {
        if (request == "up") {
            return user_->waitForStack(true) ? 1 : 0;
        }
        if (request == "connect" || request == "keep") {
            return connect(request == "keep");
        }
        if (request == "scan") {
            user_->manager().scan();
        } else if (request == "block") {
            block();
        } else if (request == "fill") {
            fill();
        } else if (request == "unblock") {
            unblock();
        } else if (request == "end") {
            user_->leave();
        }
        return 1;
    }

    // Filled in place: a text that is moved leaves its bytes where it was.
    char connect(bool keep) {
        settings_.securityMode = static_cast<wifi::SecurityMode>(next().front() - '0');
        settings_.hidden = next() == "1";
        settings_.ssid.assign(next());
        settings_.password.assign(next());
        settings_.identity.assign(next());
        settings_.anonymousIdentity.assign(next());
        certificates_.keyFile.assign(next());
        certificates_.keyPassword.assign(next());
        const wifi::ConnectResult verdict = user_->manager().connect(settings_, certificates_);
        if (!keep) {
            wipe(settings_.password);
            wipe(settings_.identity);
            wipe(settings_.anonymousIdentity);
            wipe(certificates_.keyPassword);
        }
        return static_cast<char>(verdict);
    }

    void block() {
        std::promise<void> entered;
        auto once = std::make_shared<bool>(false);
        user_->manager().onScanningChanged([this, &entered, once] {
            if (!std::exchange(*once, true)) {
                entered.set_value();
                unblocked_.wait();
            }
        });
        user_->manager().scan();
        entered.get_future().wait();
    }

    void fill() {
        constexpr int bound = 4096;
        for (int i = 0; i < bound; ++i) {
            user_->manager().connectConfigured("Unknown");
        }
    }

    void unblock() {
        if (!std::exchange(free_, true)) {
            unblock_.set_value();
        }
    }

    std::array<char, 4096> packet_{};
    std::string_view rest_;
    wifi::ConnectionSettings settings_;
    wifi::Certificates certificates_;
    bool free_ = false;
    std::promise<void> unblock_;
    std::shared_future<void> unblocked_ = unblock_.get_future();
    std::unique_ptr<WifiUser> user_ = std::make_unique<WifiUser>();
};

}  // namespace
}  // namespace kaz::test

int main() {
    kaz::test::Holder().serve();
    return 0;
}
