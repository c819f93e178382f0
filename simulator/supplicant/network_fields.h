#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::sim {

// The fields a network block may have, and the text forms of their values: text is "quoted" when it can be
// shown, else hexadecimal digits; everything else is written as it is.
struct NetworkField {
    enum class Kind {
        ssid,        // up to 32 bytes
        text,        // any bytes
        passphrase,  // 8 to 63 characters, or a key of 32 bytes
        wepKey,      // up to 16 bytes
        number,      // between lowest and highest
        keywords,    // words of a list, separated by blanks
        eapMethods,  // likewise; which ones depends on the supplicant
    };

    std::string_view name;
    Kind kind;
    std::string_view initial = {};  // shown when nothing was set; a field without one is not shown then
    int lowest = 0;
    int highest = 0;
    std::vector<std::string_view> words = {};
    bool secret = false;    // never shown
    bool unquoted = false;  // a text that arrives for it is not to be put in quotes
};

// In the order in which they are shown and saved.
const std::vector<NetworkField>& networkFields();

// Null for an unknown name.
const NetworkField* findNetworkField(std::string_view name);

// The bytes that a text form stands for; empty when it is none.
std::optional<std::string> bytesOfText(std::string_view text);

// "quoted", or hexadecimal when there is a byte that is no printable ASCII character.
std::string textOfBytes(std::string_view bytes);

}  // namespace kaz::sim
