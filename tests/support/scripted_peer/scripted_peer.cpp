#include "support/scripted_peer/scripted_peer.h"

#include "support/message_text/message_text.h"
#include "support/scripted_peer/bus_thread.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace kaz::test {
namespace {

const std::string propertiesInterface = "org.freedesktop.DBus.Properties";

std::string keyOf(const std::string& path, const std::string& interface, const std::string& member) {
    return path + ' ' + interface + '.' + member;
}

std::string propertyKeyOf(const std::string& path, const std::string& interface, const std::string& member,
                          const std::string& property) {
    return keyOf(path, propertiesInterface, member) + ' ' + interface + '.' + property;
}

std::string keyOf(sd_bus_message* call) {
    const std::string path = sd_bus_message_get_path(call);
    const char* interface = sd_bus_message_get_interface(call);
    const std::string member = sd_bus_message_get_member(call);
    if (interface == nullptr || interface != propertiesInterface) {
        return keyOf(path, interface == nullptr ? "" : interface, member);
    }
    const char* owner = "";
    const char* property = "";
    sd_bus_message_rewind(call, 1);
    sd_bus_message_read(call, "s", &owner);
    if (member != "GetAll") {
        sd_bus_message_read(call, "s", &property);
    }
    sd_bus_message_rewind(call, 1);
    return propertyKeyOf(path, owner, member, property);
}

}  // namespace

struct ScriptedPeer::Script {
    explicit Script(CallLog& calls) : log(calls) {}

    void set(std::string key, Answer answer) {
        const std::lock_guard lock(mutex);
        answers.insert_or_assign(std::move(key), std::move(answer));
    }

    Answer answerTo(sd_bus_message* call) {
        const std::lock_guard lock(mutex);
        const auto found = answers.find(keyOf(call));
        return found != answers.end()
                   ? found->second
                   : errorReply("org.freedesktop.DBus.Error.UnknownMethod", "Not in the script");
    }

    void receive(sd_bus_message* message) {
        if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) {
            return;
        }
        const char* interface = sd_bus_message_get_interface(message);
        const std::string call =
            keyOf(sd_bus_message_get_path(message), interface == nullptr ? "" : interface,
                  sd_bus_message_get_member(message)) +
            '(' + messageText(message) + ')';
        log.add(call);
        try {
            answer(message);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error("The answer to " + call + ": " + error.what());
        }
    }

    void answer(sd_bus_message* call) {
        const dbus::MessagePtr answer = answerTo(call)(call);
        if (answer == nullptr) {
            return;
        }
        sd_bus* const bus = sd_bus_message_get_bus(call);
        const int sent = sd_bus_send(bus, answer.get(), nullptr);
        // A bus that is gone takes none.
        if (sd_bus_is_open(bus) > 0) {
            checked(sent, "sd_bus_send");
        }
    }

    CallLog& log;
    std::mutex mutex;
    std::map<std::string, Answer> answers;
};

ScriptedPeer::ScriptedPeer(std::string address, std::string name, CallLog& log)
    : address_(std::move(address)), name_(std::move(name)), script_(std::make_shared<Script>(log)) {
    comeBack();
}

ScriptedPeer::~ScriptedPeer() = default;

void ScriptedPeer::onCall(const std::string& path, const std::string& interface, const std::string& member,
                          Answer answer) {
    script_->set(keyOf(path, interface, member), std::move(answer));
}

void ScriptedPeer::onGet(const std::string& path, const std::string& interface, const std::string& property,
                         Answer answer) {
    script_->set(propertyKeyOf(path, interface, "Get", property), std::move(answer));
}

void ScriptedPeer::onSet(const std::string& path, const std::string& interface, const std::string& property,
                         Answer answer) {
    script_->set(propertyKeyOf(path, interface, "Set", property), std::move(answer));
}

void ScriptedPeer::onGetAll(const std::string& path, const std::string& interface, Answer answer) {
    script_->set(propertyKeyOf(path, interface, "GetAll", ""), std::move(answer));
}

void ScriptedPeer::emit(const std::string& path, const std::string& interface, const std::string& member,
                        const Append& append) {
    connection_->run([&](sd_bus* bus) {
        dbus::MessagePtr signal;
        checked(sd_bus_message_new_signal(bus, dbus::out(signal), path.c_str(), interface.c_str(),
                                          member.c_str()),
                "sd_bus_message_new_signal");
        append(signal.get());
        checked(sd_bus_send(bus, signal.get(), nullptr), "sd_bus_send");
    });
}

void ScriptedPeer::leave() {
    connection_.reset();
}

void ScriptedPeer::comeBack() {
    connection_ = std::make_unique<BusThread>(
        address_, [this](sd_bus* bus) { checked(sd_bus_request_name(bus, name_.c_str(), 0), name_.c_str()); },
        [script = script_](sd_bus_message* message) { script->receive(message); });
}

}  // namespace kaz::test
