#pragma once

#include "base/file_descriptor.h"
#include "base/non_copyable.h"
#include "base/sd_bus/handles.h"
#include "base/temporary_folder.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace kaz::test {

// A system bus that does only what the test orders, on the test's thread. It has one client at a time.
class HandDrivenBus : NonCopyable {
  public:
    // The unique name that it returns as the owner of every name.
    static constexpr const char* owner = ":1.2";

    // Becomes the system bus.
    HandDrivenBus();

    // Waits until a client has connected and asks to be let in, which it then never is. Returns false on timeout.
    bool hears();

    // Waits for a client and lets it in. Returns false on timeout.
    bool letIn();

    // Replies to the client's next calls of the bus, in order. Returns their members; fewer if the client leaves.
    std::vector<std::string> answer(std::size_t calls);

    // From now on replies to calls of this member with an error.
    void refuse(const std::string& member) { refused_.insert(member); }

    // Sends the bus's signal of a new owner.
    void emitOwnerChange(const std::string& name, const std::string& former, const std::string& present);

    // Disconnects the client.
    void hangUp();

  private:
    bool accept();
    std::string reply(sd_bus_message* call);

    TemporaryFolder folder_;
    std::string path_;
    FileDescriptor listener_;
    FileDescriptor connection_;
    dbus::BusPtr client_;
    std::set<std::string> refused_;
};

}  // namespace kaz::test
