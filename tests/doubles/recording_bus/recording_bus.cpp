#include "doubles/recording_bus/recording_bus.h"

#include "support/message_text/message_text.h"
#include "support/scripted_peer/bus_thread.h"

#include <systemd/sd-bus.h>

#include <string_view>

namespace kaz::test {
namespace {

constexpr std::string_view busName = "org.freedesktop.DBus";

std::string_view text(const char* textOrNull) {
    return textOrNull == nullptr ? std::string_view() : textOrNull;
}

// The value of a key in a match rule: key='value',key='value'.
std::string ruleValue(std::string_view rule, std::string_view key) {
    const std::string opening = std::string(key) + "='";
    const auto at = rule.find(opening);
    if (at == std::string_view::npos) {
        return {};
    }
    const auto begin = at + opening.size();
    return std::string(rule.substr(begin, rule.find('\'', begin) - begin));
}

void noteRule(CallLog& log, std::string_view verb, std::string_view rule) {
    if (ruleValue(rule, "sender") != busName) {
        log.add(std::string(verb) + ' ' + ruleValue(rule, "interface") + '.' + ruleValue(rule, "member") +
                " of " + ruleValue(rule, "sender") + ' ' + ruleValue(rule, "path"));
    }
}

void note(CallLog& log, sd_bus_message* call) {
    const std::string_view destination = text(sd_bus_message_get_destination(call));
    const std::string_view member = text(sd_bus_message_get_member(call));
    if (destination != busName) {
        std::string line = "call ";
        line += destination;
        line += ' ';
        line += text(sd_bus_message_get_path(call));
        line += ' ';
        line += text(sd_bus_message_get_interface(call));
        line += '.';
        line += member;
        log.add(line + '(' + messageText(call) + ')');
    } else if (member == "AddMatch" || member == "RemoveMatch") {
        const char* rule = "";
        sd_bus_message_read(call, "s", &rule);
        noteRule(log, member == "AddMatch" ? "match" : "unmatch", rule);
    }
}

void becomeMonitor(sd_bus* bus) {
    checked(sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus.Monitoring", "BecomeMonitor", nullptr, nullptr, "asu", 1,
                               "type='method_call'", 0U),
            "BecomeMonitor");
}

}  // namespace

RecordingBus::RecordingBus(const std::string& address, CallLog& log)
    : connection_(std::make_unique<BusThread>(address, becomeMonitor, [&log](sd_bus_message* message) {
          if (sd_bus_message_is_method_call(message, nullptr, nullptr) > 0) {
              note(log, message);
          }
      })) {}

RecordingBus::~RecordingBus() = default;

}  // namespace kaz::test
