// The report for a bug report, after a day in which every name and secret was used.
#include "base/hex.h"
#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::vm {
namespace {

using DoctorReport = DeviceTest;

std::string base64(std::string_view bytes) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    // Without the end, whose letters depend on what follows.
    for (std::size_t i = 0; i + 3 <= bytes.size(); i += 3) {
        unsigned long three = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            three = three * 256 + static_cast<unsigned char>(bytes[i + k]);
        }
        for (const int shift : {18, 12, 6, 0}) {
            result += letters[three >> shift & 63U];
        }
    }
    return result;
}

// Each byte that `isPlain` does not accept as `format` writes it.
std::string escaped(std::string_view bytes, bool (*isPlain)(unsigned char), const char* format) {
    std::string result;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        result += isPlain(byte) ? std::string(1, each) : fmt::format(fmt::runtime(format), byte);
    }
    return result;
}

bool isGraphic(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7f && byte != '"' && byte != '\\';
}
bool isUnreserved(unsigned char byte) {
    return std::isalnum(byte) != 0 || byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

std::vector<std::string> encodings(const std::string& bytes) {
    std::string upper = toHex(bytes);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return {bytes,
            toHex(bytes),
            upper,
            base64(bytes),
            escaped(bytes, &isGraphic, "\\x{:02x}"),
            escaped(bytes, &isGraphic, "\\x{:02X}"),
            escaped(bytes, &isGraphic, "\\{:03o}"),
            escaped(bytes, &isGraphic, "\\u{:04x}"),
            escaped(bytes, &isUnreserved, "%{:02X}"),
            escaped(bytes, &isUnreserved, "%{:02x}")};
}

TEST_F(DoctorReport, HasNoSecretNameOrAddress) {
    const std::vector<wifi::ConnectionSettings> networks{openNetwork, wpa2Network, peapNetwork,
                                                         quotedNetwork};
    for (const wifi::ConnectionSettings& each : networks) {
        EXPECT_TRUE(device().connects(each)) << each.ssid;
    }
    run("rm -f /run/report.txt; kazwifictl report /run/report.txt");
    const std::string report = run("cat /run/report.txt");
    std::vector<std::string> wanted{"alice", "10.77.", "02:00:00:"};
    for (const wifi::ConnectionSettings& each : networks) {
        const std::vector<std::string> forms = encodings(each.ssid);
        wanted.insert(wanted.end(), forms.begin(), forms.end());
    }
    for (const std::string& secret : secrets) {
        const std::vector<std::string> forms = encodings(secret);
        wanted.insert(wanted.end(), forms.begin(), forms.end());
    }
    for (const std::string& each : wanted) {
        EXPECT_EQ(report.find(each), std::string::npos) << each;
    }
    for (const char* each : {"# Findings\n", "wpa_supplicant wlan0 completed\n", "rx_bytes ",
                             "CTRL-EVENT-CONNECTED", "<ssid-1>", "<mac-1>", "<ip-1>"}) {
        EXPECT_NE(report.find(each), std::string::npos) << each;
    }
    if (HasFailure()) {
        std::puts(report.c_str());
    }
}

}  // namespace
}  // namespace kaz::vm
