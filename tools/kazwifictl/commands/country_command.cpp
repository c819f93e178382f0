#include <fmt/format.h>

#include <optional>
#include <string>
#include <thread>

#include "inspection/inspect.h"
#include "inspection/interface_in_use.h"
#include "inspection/nl80211.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/text/ssid_text.h"
#include "requests/country.h"

namespace kaz::ctl {
namespace {

using Country = std::optional<std::string>;

constexpr std::string_view world = "00";

// The kernel's; nothing if it cannot be asked.
Country kernelCountry() {
    const auto country = inspection::placesOfEnvironment().kernel ? inspection::readKernelCountry()
                                                                  : inspection::Fact<std::string>();
    return country.isKnown() ? Country(*country) : std::nullopt;
}

// It applies the rules a moment after it is told, or never if it knows none for the country.
Country kernelCountryOnce(const std::string& wanted) {
    constexpr int tries = 10;
    constexpr std::chrono::milliseconds pause{100};
    Country now = kernelCountry();
    for (int i = 0; i < tries && now && *now != wanted; ++i) {
        std::this_thread::sleep_for(pause);
        now = kernelCountry();
    }
    return now;
}

std::string line(std::string_view label, const std::string& value) {
    return fmt::format("{:<20}{}\n", label, value);
}

std::string kernelText(const Country& kernel) {
    if (!kernel) {
        return {};
    }
    return line("Kernel", *kernel == world ? "00, what every country allows" : harmless(*kernel, true));
}

Json orNull(const Country& country) {
    return country ? Json(validUtf8(*country)) : Json();
}

Report shown(const std::string& what) {
    const auto interface = inspection::readInterfaceInUse();
    if (!interface.isKnown()) {
        throw CommandFailed({ExitCode::noStack, what,
                             interface.isUnknown() ? harmless(interface.why(), true)
                                                   : "wpa_supplicant has no Wi-Fi interface",
                             "kazwifictl doctor"});
    }
    const Country kernel = kernelCountry();
    return {line("wpa_supplicant", harmless(interface->country.value_or("none is set"), true)) +
                kernelText(kernel),
            {{"country", orNull(interface->country)}, {"kernel_country", orNull(kernel)}},
            std::nullopt};
}

}  // namespace

Report showOrSetCountry(const Options& options, Workspace& place, Output& /*output*/) {
    const std::string what = options.country.empty() ? "cannot read the country" : "cannot set the country";
    place.look(what, Workspace::Need::stack);
    if (options.country.empty()) {
        return shown(what);
    }
    const requests::Change change = requests::setCountry(options.country, Session::requestLimit);
    if (!change.done) {
        throw CommandFailed({ExitCode::failed, what, harmless(change.trouble, true), "kazwifictl doctor"});
    }
    const Country kernel = kernelCountryOnce(options.country);
    Report report{fmt::format("The country is {}.\n", options.country) +
                      (kernel && *kernel != options.country ? kernelText(kernel) : ""),
                  {{"country", options.country}, {"kernel_country", orNull(kernel)}},
                  std::nullopt};
    if (!change.saved) {
        report.failure = notWritten(
            fmt::format("the country is {}, but only until wpa_supplicant restarts", options.country));
    }
    return report;
}

}  // namespace kaz::ctl
