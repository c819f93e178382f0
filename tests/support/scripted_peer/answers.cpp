#include "support/scripted_peer/answers.h"

#include <utility>

namespace kaz::test {

Answer replyWith(Append append) {
    return [append = std::move(append)](sd_bus_message* call) {
        sd_bus_message* made = nullptr;
        requireSuccess(sd_bus_message_new_method_return(call, &made), "sd_bus_message_new_method_return");
        dbus::MessagePtr answer(made);
        append(made);
        return answer;
    };
}

Answer errorReply(std::string name, std::string text) {
    return [name = std::move(name), text = std::move(text)](sd_bus_message* call) {
        sd_bus_message* made = nullptr;
        requireSuccess(sd_bus_message_new_method_errorf(call, &made, name.c_str(), "%s", text.c_str()),
                       "sd_bus_message_new_method_errorf");
        return dbus::MessagePtr(made);
    };
}

Answer noReply() {
    return [](sd_bus_message*) { return dbus::MessagePtr(); };
}

}  // namespace kaz::test
