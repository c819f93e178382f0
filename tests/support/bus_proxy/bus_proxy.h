// A bus on which calls fail in the ways in which a bus and its peers can fail.
#pragma once

#include "base/event_fd.h"
#include "base/file_descriptor.h"
#include "base/journal.h"
#include "base/non_copyable.h"
#include "base/temporary_folder.h"
#include "support/waiting/waiting.h"

#include <atomic>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kaz::test {

// Passes everything between its clients and a bus, on its own thread, and applies ordered faults to calls.
class BusProxy : NonCopyable {
  public:
    enum class Fault {
        refuse,         // an error reply; the call does not arrive
        swallow,        // no reply; the call does not arrive
        loseReply,      // no reply, although the call arrives
        holdReply,      // the reply comes at release()
        repeatReply,    // the reply comes twice
        truncateReply,  // the connection ends after one half of the reply
        cutBefore,      // the connection ends; the call does not arrive
        cutAfter,       // the connection ends instead of the reply
    };

    // For the next call of this member whose text arguments contain `argument`.
    struct Order {
        Fault fault{};
        std::string member;
        std::string argument = {};
        std::string errorText = "it did not work";  // for Fault::refuse
    };

    static constexpr const char* errorName = "org.freedesktop.DBus.Error.LimitsExceeded";

    // `busAddress` begins with "unix:path=". Throws std::system_error.
    explicit BusProxy(const std::string& busAddress);
    ~BusProxy();

    // Sets DBUS_SYSTEM_BUS_ADDRESS of this process to this proxy.
    void becomeSystemBus() const;

    void order(Order order);
    // Blocks until the ordered fault has been applied: the call has come, or its reply for a fault of the reply.
    bool waitForFault();
    void release();

    // The calls so far, as "Member(text argument, text argument)". Returns false on timeout.
    bool waitForCall(const std::string& text) const;
    void forgetCalls() { calls_.take(); }

  private:
    class Link;

    void serve();
    void accept();
    std::optional<Order> faultOf(const std::string& member, const std::string& text);

    TemporaryFolder folder_{"kaz-proxy-"};
    std::string bus_;
    FileDescriptor listener_;
    EventFd wakeUp_;
    std::mutex mutex_;
    std::optional<Order> order_;
    std::size_t ordered_ = 0;
    Counter applied_;
    std::atomic<bool> released_ = false;
    std::atomic<bool> ending_ = false;
    Journal<std::string> calls_;
    std::list<Link> links_;
    std::thread thread_;  // the last member: it uses the others
};

}  // namespace kaz::test
