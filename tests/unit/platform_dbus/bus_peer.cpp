#include "unit/platform_dbus/bus_peer.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

int check(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string(what) + ": " + std::to_string(result));
    }
    return result;
}

int answer(sd_bus_message* call, std::string_view member, const char* first) {
    if (member == "Echo") {
        return sd_bus_reply_method_return(call, "s", first);
    }
    if (member == "Refuse") {
        return sd_bus_reply_method_errorf(call, "test.Error.Refused", "will not take %s", first);
    }
    if (member == "Get") {
        const char* property = nullptr;
        sd_bus_message_read(call, "s", &property);
        const std::string value = std::string("value of ") + first + "." + property;
        return sd_bus_reply_method_return(call, "v", "s", value.c_str());
    }
    return member == "Set" ? sd_bus_reply_method_return(call, "") : 1;
}

}  // namespace

BusPeer::BusPeer() : wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    sd_bus* bus = nullptr;
    check(sd_bus_open_system(&bus), "sd_bus_open_system");
    bus_.reset(bus);
    const char* name = nullptr;
    check(sd_bus_get_unique_name(bus, &name), "sd_bus_get_unique_name");
    uniqueName_ = name;
    check(sd_bus_add_fallback(bus, nullptr, "/", &BusPeer::onCall, this), "sd_bus_add_fallback");
    thread_ = std::thread([this] { serve(); });
}

BusPeer::~BusPeer() {
    ending_ = true;
    poke();
    thread_.join();
    bus_.reset();
    ::close(wakeUp_);
}

void BusPeer::own(const std::string& name) {
    const std::lock_guard lock(mutex_);
    check(sd_bus_request_name(bus_.get(), name.c_str(), 0), "sd_bus_request_name");
    poke();
}

void BusPeer::disown(const std::string& name) {
    const std::lock_guard lock(mutex_);
    check(sd_bus_release_name(bus_.get(), name.c_str()), "sd_bus_release_name");
    poke();
}

void BusPeer::emit(const Signal& signal, const std::string& argument, const std::string& destination) {
    send(signal, {argument}, destination);
}

void BusPeer::emitOwnerChange(const std::string& name, const std::string& former, const std::string& present,
                              const std::string& destination) {
    send({"/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged"}, {name, former, present},
         destination);
}

void BusPeer::send(const Signal& signal, const std::vector<std::string>& arguments,
                   const std::string& destination) {
    const std::lock_guard lock(mutex_);
    sd_bus_message* message = nullptr;
    check(sd_bus_message_new_signal(bus_.get(), &message, signal.path.c_str(), signal.interface.c_str(),
                                    signal.member.c_str()),
          "sd_bus_message_new_signal");
    const std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)> owned(message,
                                                                                 &sd_bus_message_unref);
    for (const std::string& argument : arguments) {
        check(sd_bus_message_append(message, "s", argument.c_str()), "sd_bus_message_append");
    }
    if (!destination.empty()) {
        check(sd_bus_message_set_destination(message, destination.c_str()), "sd_bus_message_set_destination");
    }
    check(sd_bus_send(bus_.get(), message, nullptr), "sd_bus_send");
    check(sd_bus_flush(bus_.get()), "sd_bus_flush");
    poke();
}

void BusPeer::settle() {
    const std::lock_guard lock(mutex_);
    check(sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "GetId", nullptr, nullptr, ""),
          "GetId");
    poke();
}

std::vector<std::string> BusPeer::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

std::string BusPeer::caller() const {
    const std::lock_guard lock(mutex_);
    return caller_;
}

bool BusPeer::waitForCall(const std::string& call) const {
    std::unique_lock lock(mutex_);
    return called_.wait_for(lock, timeLimit,
                            [&] { return std::find(calls_.begin(), calls_.end(), call) != calls_.end(); });
}

void BusPeer::receive(const Signal& signal) {
    const std::lock_guard lock(mutex_);
    check(sd_bus_match_signal(bus_.get(), nullptr, nullptr, signal.path.c_str(), signal.interface.c_str(),
                              signal.member.c_str(), &BusPeer::onSignal, this),
          "sd_bus_match_signal");
    poke();
}

int BusPeer::onCall(sd_bus_message* message, void* peer, sd_bus_error* /*error*/) {
    auto* self = static_cast<BusPeer*>(peer);
    const char* first = "";
    if (sd_bus_message_has_signature(message, "") == 0) {
        sd_bus_message_read(message, "s", &first);
    }
    const char* member = sd_bus_message_get_member(message);
    self->calls_.push_back(std::string(member) + "(" + first + ")");
    self->caller_ = sd_bus_message_get_sender(message);
    self->called_.notify_all();
    return answer(message, member, first);
}

int BusPeer::onSignal(sd_bus_message* /*message*/, void* peer, sd_bus_error* /*error*/) {
    ++static_cast<BusPeer*>(peer)->received_;
    return 0;
}

void BusPeer::serve() {
    while (!ending_) {
        std::array<pollfd, 2> waits{};
        {
            const std::lock_guard lock(mutex_);
            int processed = 1;
            while (processed > 0) {
                processed = sd_bus_process(bus_.get(), nullptr);
            }
            if (processed < 0) {
                return;  // the bus is gone
            }
            waits[0] = {sd_bus_get_fd(bus_.get()), static_cast<short>(sd_bus_get_events(bus_.get())), 0};
        }
        waits[1] = {wakeUp_, POLLIN, 0};
        ::poll(waits.data(), waits.size(), -1);
        eventfd_t ignored = 0;
        ::eventfd_read(wakeUp_, &ignored);
    }
}

void BusPeer::poke() const {
    ::eventfd_write(wakeUp_, 1);
}

}  // namespace kaz::test
