#include "support/scripted_peer/answers.h"

#include <utility>

namespace kaz::test {

Answer replyWith(Append append) {
    return [append = std::move(append)](sd_bus_message* call) {
        dbus::MessagePtr answer;
        checked(sd_bus_message_new_method_return(call, dbus::out(answer)),
                "sd_bus_message_new_method_return");
        append(answer.get());
        return answer;
    };
}

Answer errorReply(std::string name, std::string text) {
    return [name = std::move(name), text = std::move(text)](sd_bus_message* call) {
        dbus::MessagePtr answer;
        checked(sd_bus_message_new_method_errorf(call, dbus::out(answer), name.c_str(), "%s", text.c_str()),
                "sd_bus_message_new_method_errorf");
        return answer;
    };
}

Answer noReply() {
    return [](sd_bus_message*) { return dbus::MessagePtr(); };
}

}  // namespace kaz::test
