#pragma once

#include "base/non_copyable.h"

#include "support/call_log/call_log.h"
#include "support/scripted_peer/answers.h"

#include <memory>
#include <string>

namespace kaz::test {

class BusThread;

// A service on a bus, with its own thread. It owns a name and replies to method calls as the test ordered;
// the last order for a member applies. For other calls it returns org.freedesktop.DBus.Error.UnknownMethod.
// The log records every call before its reply, as
//
//   /path the.interface.Member("first argument", i2)
//
// with the arguments in the form of messageText().
class ScriptedPeer : NonCopyable {
  public:
    // Returns when it owns the name.
    ScriptedPeer(std::string address, std::string name, CallLog& log);
    ~ScriptedPeer();

    void onCall(const std::string& path, const std::string& interface, const std::string& member,
                Answer answer);

    // The same for Get, Set and GetAll of org.freedesktop.DBus.Properties.
    void onGet(const std::string& path, const std::string& interface, const std::string& property,
               Answer answer);
    void onSet(const std::string& path, const std::string& interface, const std::string& property,
               Answer answer);
    void onGetAll(const std::string& path, const std::string& interface, Answer answer);

    // Sends a signal and returns when it was sent.
    void emit(const std::string& path, const std::string& interface, const std::string& member,
              const Append& append);

    // Disconnects like a process that ends: its name is released, and calls fail. Then connects again.
    void leave();
    void comeBack();

  private:
    struct Script;

    std::string address_;
    std::string name_;
    std::shared_ptr<Script> script_;
    std::unique_ptr<BusThread> connection_;
};

}  // namespace kaz::test
