#include "simulator/bus/spoilt_reply.h"

#include "simulator/bus/vtable.h"

#include <set>
#include <string_view>

namespace kaz::sim {
namespace {

bool repliesWithDictionary(std::string_view member) {
    static const std::set<std::string_view> members = {"GetAll", "SignalPoll"};
    return members.contains(member);
}

void appendWrongTypes(sd_bus_message* out, std::string_view member) {
    if (repliesWithDictionary(member)) {
        checked(sd_bus_message_append(out, "a{sv}", 5, "State", "u", 1U, "Signal", "s", "loud", "rssi", "s",
                                      "loud", "ActiveState", "u", 1U, "OnlineState", "u", 1U),
                "append");
    } else if (member == "Get") {
        checked(sd_bus_message_append(out, "v", "u", 1U), "append");
    } else {
        checked(sd_bus_message_append(out, "u", 1U), "append");
    }
}

void appendWrongNesting(sd_bus_message* out, std::string_view member) {
    if (member == "Get") {
        checked(sd_bus_message_append(out, "v", "a(ss)", 1, "not", "this"), "append");
    } else {
        checked(sd_bus_message_append(out, "a(ss)", 1, "not", "this"), "append");
    }
}

std::string_view propertyAskedFor(sd_bus_message* call) {
    const char* interface = nullptr;
    const char* property = nullptr;
    checked(sd_bus_message_read(call, "ss", &interface, &property), "read");
    return property;
}

void appendEmptyProperty(sd_bus_message* out, std::string_view property) {
    static const std::set<std::string_view> paths = {"Interfaces", "Networks", "BSSs"};
    static const std::set<std::string_view> texts = {"ActiveState", "OnlineState", "State"};
    if (texts.contains(property)) {
        checked(sd_bus_message_append(out, "v", "s", ""), "append");
    } else if (property == "Properties") {
        checked(sd_bus_message_append(out, "v", "a{sv}", 0), "append");
    } else {
        checked(sd_bus_message_append(out, "v", paths.contains(property) ? "ao" : "as", 0), "append");
    }
}

void appendEmptyValue(sd_bus_message* out, sd_bus_message* call) {
    const std::string_view member = sd_bus_message_get_member(call);
    if (repliesWithDictionary(member)) {
        checked(sd_bus_message_append(out, "a{sv}", 0), "append");
    } else if (member == "Get") {
        appendEmptyProperty(out, propertyAskedFor(call));
    }
}

}  // namespace

void spoiltReply(const Fault& fault, sd_bus_message* call) {
    if (fault.kind == FaultKind::error) {
        sd_bus_reply_method_errorf(call, fault.errorName.c_str(), "%s", fault.errorText.c_str());
        return;
    }
    if (fault.kind == FaultKind::vanished) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD,
                                   "Method \"%s\" with signature \"%s\" on interface \"%s\" doesn't exist\n",
                                   sd_bus_message_get_member(call), sd_bus_message_get_signature(call, 1),
                                   sd_bus_message_get_interface(call));
        return;
    }
    const Message reply = newReply(call);
    const std::string_view member = sd_bus_message_get_member(call);
    if (fault.kind == FaultKind::wrongType) {
        appendWrongTypes(reply.get(), member);
    } else if (fault.kind == FaultKind::wrongNesting) {
        appendWrongNesting(reply.get(), member);
    } else if (fault.kind == FaultKind::emptyValue) {
        appendEmptyValue(reply.get(), call);
    }
    send(reply);
}

}  // namespace kaz::sim
