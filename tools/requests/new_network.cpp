#include "requests/new_network.h"

#include "inspection/bus_queries.h"
#include "requests/first_interface.h"

namespace kaz::requests {
namespace {

bool appendField(sd_bus_message* message, const char* name, const std::variant<std::string, int>& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? sd_bus_message_append(message, "{sv}", name, "s", text->c_str()) >= 0
                           : sd_bus_message_append(message, "{sv}", name, "i", std::get<int>(value)) >= 0;
}

bool append(sd_bus_message* message, const NewNetwork& network) {
    sd_bus_message_sensitive(message);
    bool good = sd_bus_message_open_container(message, 'a', "{sv}") >= 0 &&
                sd_bus_message_open_container(message, 'e', "sv") >= 0 &&
                sd_bus_message_append_basic(message, 's', "ssid") >= 0 &&
                sd_bus_message_open_container(message, 'v', "ay") >= 0 &&
                sd_bus_message_append_array(message, 'y', network.ssid.data(), network.ssid.size()) >= 0 &&
                sd_bus_message_close_container(message) >= 0 && sd_bus_message_close_container(message) >= 0;
    for (const auto& [name, value] : network.fields) {
        good = good && appendField(message, name, value);
    }
    return good && sd_bus_message_close_container(message) >= 0;
}

}  // namespace

Change addNetwork(const NewNetwork& network, std::chrono::milliseconds limit) {
    Change change;
    inspection::BusQueries queries(limit);
    const auto add = [&](const std::string& path) {
        queries.ask(
            supplicantService, path, interfaceType, "AddNetwork",
            [&network](sd_bus_message* message) { return append(message, network); },
            [&change](const inspection::Answer& answer) {
                change.done = answer.message != nullptr;
                // The supplicant's text may repeat what it was sent.
                change.trouble = change.done ? "" : "wpa_supplicant refused the settings";
            });
    };
    askFirstInterface(queries, add, [&change](const std::string& why) { change.trouble = why; });
    queries.run();
    return change;
}

}  // namespace kaz::requests
