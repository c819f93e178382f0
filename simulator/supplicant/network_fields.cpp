#include "simulator/supplicant/network_fields.h"

#include "base/hex.h"

#include <algorithm>

namespace kaz::sim {
namespace {

using Kind = NetworkField::Kind;

NetworkField number(std::string_view name, std::string_view initial, int lowest, int highest) {
    return {.name = name, .kind = Kind::number, .initial = initial, .lowest = lowest, .highest = highest};
}

NetworkField text(std::string_view name, bool secret = false) {
    return {.name = name, .kind = Kind::text, .secret = secret};
}

NetworkField keywords(std::string_view name, std::string_view initial, std::vector<std::string_view> words) {
    return {.name = name,
            .kind = Kind::keywords,
            .initial = initial,
            .words = std::move(words),
            .unquoted = true};
}

NetworkField wepKey(std::string_view name) {
    return {.name = name, .kind = Kind::wepKey, .secret = true};
}

std::vector<NetworkField> makeFields() {
    return {
        {.name = "ssid", .kind = Kind::ssid},
        [] {
            auto field = number("scan_ssid", "0", 0, 1);
            field.unquoted = true;
            return field;
        }(),
        {.name = "bssid", .kind = Kind::text, .unquoted = true},
        {.name = "psk", .kind = Kind::passphrase, .secret = true},
        number("mem_only_psk", "0", 0, 1),
        text("sae_password", true),
        text("sae_password_id"),
        keywords("proto", "WPA RSN", {"WPA", "RSN", "WPA2", "OSEN"}),
        keywords("key_mgmt", "WPA-PSK WPA-EAP",
                 {"NONE", "WPA-PSK", "WPA-EAP", "IEEE8021X", "FT-PSK", "FT-EAP", "WPA-PSK-SHA256",
                  "WPA-EAP-SHA256", "SAE", "FT-SAE", "OWE", "DPP", "WPA-EAP-SUITE-B", "WPA-EAP-SUITE-B-192"}),
        number("bg_scan_period", "-1", -1, 1'000'000),
        keywords("pairwise", "CCMP TKIP", {"CCMP", "TKIP", "GCMP", "CCMP-256", "GCMP-256", "NONE"}),
        keywords("group", "CCMP TKIP",
                 {"CCMP", "TKIP", "GCMP", "CCMP-256", "GCMP-256", "WEP104", "WEP40", "GTK_NOT_USED"}),
        keywords("auth_alg", "", {"OPEN", "SHARED", "LEAP"}),
        text("scan_freq"),
        text("freq_list"),
        {.name = "eap", .kind = Kind::eapMethods, .unquoted = true},
        text("identity"),
        text("anonymous_identity"),
        text("password", true),
        text("ca_cert"),
        text("client_cert"),
        text("private_key"),
        text("private_key_passwd", true),
        text("phase1"),
        text("phase2"),
        text("domain_suffix_match"),
        number("eapol_flags", "3", 0, 3),
        number("eap_workaround", "-1", -1, 1),
        number("fragment_size", "1398", 1, 65535),
        wepKey("wep_key0"),
        wepKey("wep_key1"),
        wepKey("wep_key2"),
        wepKey("wep_key3"),
        number("wep_tx_keyidx", "0", 0, 3),
        number("priority", "0", -1'000'000, 1'000'000),
        number("mode", "0", 0, 5),
        number("proactive_key_caching", "-1", -1, 1),
        number("disabled", "0", 0, 2),
        text("id_str"),
        number("ieee80211w", "3", 0, 3),
        number("mixed_cell", "0", 0, 1),
        number("frequency", "0", 0, 70200),
        number("mac_addr", "-1", -1, 2),
        number("wps_disabled", "0", 0, 1),
        number("owe_only", "0", 0, 1),
        number("beacon_prot", "0", 0, 1),
        number("transition_disable", "0", 0, 255),
        number("sae_pk", "0", 0, 2),
    };
}

}  // namespace

const std::vector<NetworkField>& networkFields() {
    static const std::vector<NetworkField> fields = makeFields();
    return fields;
}

const NetworkField* findNetworkField(std::string_view name) {
    const auto& fields = networkFields();
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const NetworkField& f) { return f.name == name; });
    return found == fields.end() ? nullptr : &*found;
}

std::optional<std::string> bytesOfText(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        return std::string(text.substr(1, text.size() - 2));
    }
    return text.starts_with('"') ? std::nullopt : fromHex(text);
}

std::string textOfBytes(std::string_view bytes) {
    const bool printable =
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
    return printable ? '"' + std::string(bytes) + '"' : toHex(bytes);
}

}  // namespace kaz::sim
