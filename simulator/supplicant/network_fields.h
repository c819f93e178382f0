#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::sim {

// The fields of a network block, and the text forms of their values. Text is "quoted" if it is printable,
// otherwise in hexadecimal digits; all other values are written unchanged.
struct NetworkField {
    enum class Kind {
        ssid,        // up to 32 bytes
        text,        // any bytes
        passphrase,  // 8 to 63 characters, or a key of 32 bytes
        wepKey,      // up to 16 bytes
        number,      // between lowest and highest
        keywords,    // words from a list, separated by blanks
        eapMethods,  // the same, from the supplicant's methods
    };

    std::string_view name;
    Kind kind;
    std::string_view initial = {};  // shown if the field was not set; empty: not shown
    int lowest = 0;
    int highest = 0;
    std::vector<std::string_view> words = {};
    bool secret = false;    // never shown
    bool unquoted = false;  // a string from the bus is not put in quotes
};

// In the order of Properties and of the configuration file.
const std::vector<NetworkField>& networkFields();

// Null for an unknown name.
const NetworkField* findNetworkField(std::string_view name);

// The bytes of a text form; empty if the form is invalid.
std::optional<std::string> bytesOfText(std::string_view text);

// "quoted", or hexadecimal if a byte is not a printable ASCII character.
std::string textOfBytes(std::string_view bytes);

}  // namespace kaz::sim
