#include "support/bus_proxy/bus_proxy.h"

#include "base/checked.h"
#include "base/sd_bus/handles.h"
#include "support/bus_proxy/wire_stream.h"
#include "support/wire/wire.h"

#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace kaz::test {
namespace {

FileDescriptor newSocket() {
    FileDescriptor made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!made.isOpen()) {
        throwErrno("socket");
    }
    return made;
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(static_cast<char*>(address.sun_path), sizeof(address.sun_path) - 1);
    return address;
}

FileDescriptor listenAt(const std::string& path) {
    FileDescriptor listener = newSocket();
    const sockaddr_un address = addressOf(path);
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(listener.get(), SOMAXCONN) != 0) {
        throwErrno(path);
    }
    return listener;
}

// Closed if nobody listens there.
FileDescriptor connectTo(const std::string& path) {
    FileDescriptor made = newSocket();
    const sockaddr_un address = addressOf(path);
    if (::connect(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        made = FileDescriptor();
    }
    return made;
}

// A peer that has gone is noticed when we read from it.
void sendTo(const FileDescriptor& peer, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::string errorReply(std::uint64_t call, const std::string& text) {
    constexpr std::size_t errorNameCode = 4;
    constexpr std::size_t replySerialCode = 5;
    constexpr std::size_t signatureCode = 8;
    constexpr std::size_t errorType = 3;
    WireBytes fields(false);
    fields.number(errorNameCode, 1).signature("s").text(BusProxy::errorName).align(8);
    fields.number(replySerialCode, 1).signature("u").number(call, 4).align(8);
    fields.number(signatureCode, 1).signature("g").signature("s");
    const std::string body = WireBytes(false).text(text).str();
    WireBytes message(false);
    message.raw("l").number(errorType, 1).number(1, 1).number(1, 1);
    message.number(body.size(), 4).number(1, 4).number(fields.size(), 4).raw(fields.str());
    return message.align(8).raw(body).str();
}

// "Member(text argument, text argument)", without the arguments that follow one of another type.
std::string textOf(sd_bus_message* call) {
    std::string text = std::string(sd_bus_message_get_member(call)) + "(";
    char type = 0;
    while (sd_bus_message_peek_type(call, &type, nullptr) > 0 && (type == 's' || type == 'o')) {
        const char* argument = nullptr;
        checked(sd_bus_message_read_basic(call, type, static_cast<void*>(&argument)), "read");
        text += (text.back() == '(' ? "" : ", ") + std::string(argument);
    }
    return text + ")";
}

}  // namespace

// One client and its connection to the bus.
class BusProxy::Link {
  public:
    Link(BusProxy& proxy, FileDescriptor client, FileDescriptor bus)
        : proxy_(proxy), client_(std::move(client)), bus_(std::move(bus)) {}

    int client() const { return client_.get(); }
    int bus() const { return bus_.get(); }

    // False when the connection has to end.
    bool fromClient();
    bool fromBus();
    void release();

  private:
    static bool receive(int peer, WireStream& stream);
    dbus::MessagePtr decoded(const std::string& bytes);
    bool pass(const std::string& bytes);
    bool passReply(const std::string& bytes);

    BusProxy& proxy_;
    FileDescriptor client_;
    FileDescriptor bus_;
    WireStream sent_;
    WireStream received_;
    WireLine decoder_;
    bool authenticated_ = false;
    std::size_t unansweredLines_ = 0;
    std::map<std::uint64_t, Fault> struck_;  // calls whose reply gets a fault
    std::vector<std::string> held_;
};

bool BusProxy::Link::receive(int peer, WireStream& stream) {
    std::array<char, 4096> buffer{};
    const ssize_t size = ::recv(peer, buffer.data(), buffer.size(), 0);
    stream.add({buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))});
    return size > 0;
}

bool BusProxy::Link::fromClient() {
    const bool open = receive(client_.get(), sent_);
    while (!authenticated_) {
        const auto line = sent_.nextLine();
        if (!line) {
            return open;
        }
        // The bus answers each line but the last one.
        authenticated_ = *line == "BEGIN\r\n";
        unansweredLines_ += authenticated_ ? 0 : 1;
        sendTo(bus_, *line);
    }
    while (const auto message = sent_.nextMessage()) {
        if (!pass(*message)) {
            return false;
        }
    }
    return open;
}

bool BusProxy::Link::fromBus() {
    const bool open = receive(bus_.get(), received_);
    for (; unansweredLines_ > 0; --unansweredLines_) {
        const auto line = received_.nextLine();
        if (!line) {
            return open;
        }
        sendTo(client_, *line);
    }
    while (const auto message = received_.nextMessage()) {
        if (!passReply(*message)) {
            return false;
        }
    }
    return open;
}

void BusProxy::Link::release() {
    for (const std::string& message : std::exchange(held_, {})) {
        sendTo(client_, message);
    }
}

dbus::MessagePtr BusProxy::Link::decoded(const std::string& bytes) {
    dbus::MessagePtr message = decoder_.receive(bytes);
    if (!message) {
        throw std::runtime_error("the proxy cannot decode a message");
    }
    return message;
}

bool BusProxy::Link::pass(const std::string& bytes) {
    const dbus::MessagePtr call = decoded(bytes);
    if (sd_bus_message_is_method_call(call.get(), nullptr, nullptr) <= 0) {
        sendTo(bus_, bytes);
        return true;
    }
    const std::string text = textOf(call.get());
    std::uint64_t serial = 0;
    checked(sd_bus_message_get_cookie(call.get(), &serial), "cookie");
    const auto order = proxy_.faultOf(sd_bus_message_get_member(call.get()), text);
    proxy_.calls_.add(text);
    if (!order) {
        sendTo(bus_, bytes);
        return true;
    }
    switch (order->fault) {
        case Fault::refuse:
            ++proxy_.applied_;
            sendTo(client_, errorReply(serial, order->errorText));
            return true;
        case Fault::swallow:
            ++proxy_.applied_;
            return true;
        case Fault::cutBefore:
            ++proxy_.applied_;
            return false;
        case Fault::loseReply:
        case Fault::holdReply:
        case Fault::repeatReply:
        case Fault::truncateReply:
        case Fault::cutAfter:
            struck_.emplace(serial, order->fault);
            sendTo(bus_, bytes);
            return true;
    }
    return true;
}

bool BusProxy::Link::passReply(const std::string& bytes) {
    if (struck_.empty()) {
        sendTo(client_, bytes);
        return true;
    }
    std::uint64_t serial = 0;
    const dbus::MessagePtr message = decoded(bytes);
    const bool isReply = sd_bus_message_get_reply_cookie(message.get(), &serial) >= 0;
    const auto struck = isReply ? struck_.find(serial) : struck_.end();
    if (struck == struck_.end()) {
        sendTo(client_, bytes);
        return true;
    }
    const Fault fault = struck->second;
    struck_.erase(struck);
    if (fault == Fault::repeatReply) {
        sendTo(client_, bytes + bytes);
    } else if (fault == Fault::truncateReply) {
        sendTo(client_, std::string_view(bytes).substr(0, bytes.size() / 2));
    } else if (fault == Fault::holdReply) {
        held_.push_back(bytes);
    }
    ++proxy_.applied_;
    return fault != Fault::cutAfter && fault != Fault::truncateReply;
}

BusProxy::BusProxy(const std::string& busAddress)
    : bus_(busAddress.substr(std::strlen("unix:path="))),
      listener_(listenAt(folder_ / "socket")),
      thread_([this] { serve(); }) {}

BusProxy::~BusProxy() {
    ending_ = true;
    wakeUp_.set();
    thread_.join();
}

void BusProxy::becomeSystemBus() const {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + (folder_ / "socket").string()).c_str(), 1);
}

void BusProxy::order(Order order) {
    const std::lock_guard lock(mutex_);
    order_ = std::move(order);
    ++ordered_;
}

bool BusProxy::waitForFault() {
    std::unique_lock lock(mutex_);
    const std::size_t ordered = ordered_;
    lock.unlock();
    return applied_.reaches(ordered);
}

void BusProxy::release() {
    released_ = true;
    wakeUp_.set();
}

bool BusProxy::waitForCall(const std::string& text) const {
    return calls_.waitUntil(
        [&](const auto& calls) {
            return std::any_of(calls.begin(), calls.end(),
                               [&](const std::string& call) { return call.find(text) != std::string::npos; });
        },
        timeLimit);
}

std::optional<BusProxy::Order> BusProxy::faultOf(const std::string& member, const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (!order_ || order_->member != member || text.find(order_->argument) == std::string::npos) {
        return std::nullopt;
    }
    return std::exchange(order_, std::nullopt);
}

void BusProxy::accept() {
    FileDescriptor client(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    FileDescriptor bus = connectTo(bus_);
    if (client.isOpen() && bus.isOpen()) {
        links_.emplace_back(*this, std::move(client), std::move(bus));
    }
}

void BusProxy::serve() {
    while (!ending_) {
        std::vector<pollfd> polled{{listener_.get(), POLLIN, 0}, {wakeUp_.get(), POLLIN, 0}};
        for (const Link& link : links_) {
            polled.push_back({link.client(), POLLIN, 0});
            polled.push_back({link.bus(), POLLIN, 0});
        }
        if (::poll(polled.data(), polled.size(), -1) <= 0) {
            continue;
        }
        if (polled[1].revents != 0) {
            wakeUp_.clear();
        }
        auto ready = polled.begin() + 2;
        for (auto link = links_.begin(); link != links_.end(); ready += 2) {
            const bool open =
                (ready[0].revents == 0 || link->fromClient()) && (ready[1].revents == 0 || link->fromBus());
            link = open ? std::next(link) : links_.erase(link);
        }
        if (released_.exchange(false)) {
            std::for_each(links_.begin(), links_.end(), [](Link& link) { link.release(); });
        }
        if (polled.front().revents != 0) {
            accept();
        }
    }
}

}  // namespace kaz::test
