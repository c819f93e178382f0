// SSIDs in the log. Any SSID in any text can be found and removed.
#include "diagnostics/connection_info_text.h"
#include "diagnostics/ssid_redaction.h"
#include "fuzz/require.h"

#include <fmt/format.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kaz::fuzz {
namespace {

constexpr std::string_view opening = "ssid=\"";

// Removes the text up to and including its first SSID, as a tool that cleans logs would. Nothing if there is no SSID,
// or one without an end.
std::optional<std::string> takeSsid(std::string_view& text) {
    const std::size_t begin = text.find(opening);
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    std::string ssid;
    for (std::size_t at = begin + opening.size(); at < text.size(); ++at) {
        if (text[at] == '"') {
            text.remove_prefix(at + 1);
            return ssid;
        }
        if (text[at] == '\\' && ++at == text.size()) {
            return std::nullopt;
        }
        ssid += text[at];
    }
    return std::nullopt;
}

void checkRecord(const std::string& one, const std::string& other) {
    const std::string record =
        fmt::format("Connected to {} while attempting to connect to {}, or so it seems",
                    wifi::redactableSsid(one), wifi::redactableSsid(other));
    std::string_view rest = record;
    require(takeSsid(rest) == one, "the first SSID of a record is found and reads back");
    require(takeSsid(rest) == other, "so is the second");
    require(rest == ", or so it seems", "and nothing else counts as part of them");
}

void checkForm(const std::string& ssid, std::size_t cut) {
    const std::string form = wifi::redactableSsid(ssid);
    std::string_view whole = form;
    require(takeSsid(whole) == ssid && whole.empty(), "an SSID reads back from its form");
    std::string_view part = std::string_view(form).substr(0, cut % form.size());
    require(!takeSsid(part), "a form that was cut off does not pass for another SSID's");
}

void checkInfo(const wifi::ConnectionInfo& info) {
    const std::string record = fmt::format("connectionInfo changed: {}", info);
    const bool live = info.status != wifi::ConnectionInfo::Status::disconnected;
    const std::string& told = live ? info.ssid : info.disconnectSsid;
    std::string_view rest = record;
    const std::optional<std::string> ssid = takeSsid(rest);
    require(ssid.value_or("") == told && ssid.has_value() == !told.empty(),
            "the one SSID that a connection's text tells reads back");
    require(!takeSsid(rest), "and there is no second");
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using kaz::wifi::ConnectionInfo;
    FuzzedDataProvider bytes(data, size);
    ConnectionInfo info;
    info.status = static_cast<ConnectionInfo::Status>(bytes.ConsumeIntegralInRange(-1, 5));
    info.disconnectReason =
        static_cast<ConnectionInfo::DisconnectReason>(bytes.ConsumeIntegralInRange(-1, 4));
    info.signal = bytes.ConsumeIntegralInRange(-101, 1);
    const auto cut = bytes.ConsumeIntegral<std::uint8_t>();
    info.ssid = bytes.ConsumeRandomLengthString(40);
    info.disconnectSsid = bytes.ConsumeRemainingBytesAsString();
    kaz::fuzz::checkForm(info.ssid, cut);
    kaz::fuzz::checkRecord(info.ssid, info.disconnectSsid);
    kaz::fuzz::checkInfo(info);
    return 0;
}
