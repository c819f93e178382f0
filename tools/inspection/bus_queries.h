#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/non_copyable.h"
#include "base/sd_bus/handles.h"
#include "inspection/fact.h"

namespace kaz::inspection {

// The reply to a question, or why there is none.
struct Answer {
    sd_bus_message* message = nullptr;  // null after a failure
    bool isAbsent = false;              // who was asked, or what was asked for, does not exist
    Unknown unknown;

    // What a failure says about a fact.
    template <typename Value>
    Fact<Value> failure() const {
        return isAbsent ? Fact<Value>::absent() : Fact<Value>(unknown);
    }
};

// Reads one value from a message. Returns false if it cannot, and leaves the value unread.
using Reader = std::function<bool(sd_bus_message*)>;
// What to read from a dictionary of properties, by name.
using Readers = std::map<std::string_view, Reader>;

Reader into(std::string& text);
Reader into(bool& flag);
Reader into(std::uint32_t& number);
Reader into(std::int32_t& number);
Reader into(std::vector<std::string>& paths);  // of an array of object paths

// Reads an array a{sv} and skips what `readers` does not name. Returns false if the message has another form.
bool readProperties(sd_bus_message* message, const Readers& readers);

// Questions on the system bus, all in flight at the same time. For one thread. No question starts a service.
class BusQueries : NonCopyable {
  public:
    using Handler = std::function<void(const Answer&)>;

    // Questions without an answer after `limit` end.
    explicit BusQueries(std::chrono::milliseconds limit);
    ~BusQueries();

    // Why there is no bus; empty if there is one.
    const std::string& trouble() const { return trouble_; }

    // Handlers may ask more.
    void ask(const std::string& service, const std::string& path, const std::string& interface,
             const std::string& member, const Reader& appendArguments, Handler handler);
    void askProperties(const std::string& service, const std::string& path, const std::string& interface,
                       Handler handler);

    // Returns when every question has ended.
    void run();

    std::string ownName() const;

  private:
    struct Question {
        Handler handler;
        dbus::SlotPtr slot;
        bool answered = false;
    };

    static int onReply(sd_bus_message* reply, void* question, sd_bus_error* error) noexcept;
    bool isAnswered() const;
    void endUnanswered();

    std::chrono::steady_clock::time_point end_;
    dbus::BusPtr bus_;
    std::string trouble_;
    std::list<Question> questions_;
};

}  // namespace kaz::inspection
