#pragma once

#include "base/non_copyable.h"

#include "support/call_log/call_log.h"
#include "support/scripted_peer/answers.h"

#include <memory>
#include <string>

namespace kaz::test {

class BusThread;

// A service on a bus, served by a thread of its own: owns a name and answers method calls as it was told to,
// whatever it was not told about with the error org.freedesktop.DBus.Error.UnknownMethod. The last order for
// a member counts. Every call that arrives is noted in the log, before it is answered, as
//
//   /path the.interface.Member("first argument", i2)
//
// with the arguments as messageText() has them.
class ScriptedPeer : NonCopyable {
  public:
    // Owns the name on return.
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

    // Sends a signal; on return it is on its way.
    void emit(const std::string& path, const std::string& interface, const std::string& member,
              const Append& append);

    // Disconnects, as a process that ends: its name goes, calls fail. Then connects anew.
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
