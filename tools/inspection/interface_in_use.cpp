#include "inspection/interface_in_use.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <utility>

#include "inspection/bus_queries.h"
#include "inspection/machine.h"
#include "inspection/nl80211.h"

namespace kaz::inspection {
namespace {

constexpr const char* service = "fi.w1.wpa_supplicant1";
constexpr const char* rootPath = "/fi/w1/wpa_supplicant1";
constexpr const char* interfaceType = "fi.w1.wpa_supplicant1.Interface";

// Asks for the first interface, which is the one that the library uses, and then about it.
class InterfaceQuestions {
  public:
    explicit InterfaceQuestions(std::chrono::milliseconds limit) : queries_(limit) {}

    Fact<InterfaceInUse> ask() {
        if (!queries_.trouble().empty()) {
            return Unknown{Obstacle::failed, queries_.trouble()};
        }
        queries_.askProperties(service, rootPath, service, [this](const Answer& answer) {
            std::vector<std::string> paths;
            result_ = answer.failure<InterfaceInUse>();
            if (answer.message == nullptr || !readProperties(answer.message, {{"Interfaces", into(paths)}})) {
                return;
            }
            result_ = Fact<InterfaceInUse>::absent();
            if (!paths.empty()) {
                askAbout(paths.front());
            }
        });
        queries_.run();
        return std::move(result_);
    }

  private:
    void askAbout(const std::string& path) {
        queries_.askProperties(service, path, interfaceType, [this](const Answer& answer) {
            std::string country;
            result_ = answer.failure<InterfaceInUse>();
            if (answer.message != nullptr &&
                readProperties(answer.message, {{"Ifname", into(found_.name)}, {"Country", into(country)}})) {
                found_.country = country.empty() ? std::nullopt : std::optional(country);
                result_ = found_;
            }
        });
        // Answered after the question before it, as the supplicant answers in order.
        queries_.ask(
            service, path, interfaceType, "SignalPoll", [](sd_bus_message* /*none*/) { return true; },
            [this](const Answer& answer) {
                std::int32_t signal = 0;
                std::int32_t rate = 0;
                // Without a link the supplicant refuses.
                found_.signal = Fact<int>::absent();
                if (answer.message != nullptr && readPoll(answer.message, signal, rate) && signal != 0) {
                    found_.signal = signal;
                    found_.rate = rate > 0 ? std::optional(rate) : std::nullopt;
                }
                if (result_.isKnown()) {
                    result_ = found_;
                }
            });
    }

    // The dictionary may be in a variant, against its description.
    static bool readPoll(sd_bus_message* message, std::int32_t& signal, std::int32_t& rate) {
        char type = 0;
        const char* contents = nullptr;
        return sd_bus_message_peek_type(message, &type, &contents) > 0 &&
               (type != 'v' || sd_bus_message_enter_container(message, 'v', contents) > 0) &&
               readProperties(message, {{"rssi", into(signal)}, {"linkspeed", into(rate)}});
    }

    InterfaceInUse found_;
    Fact<InterfaceInUse> result_;
    BusQueries queries_;
};

// The bytes of an address or a mask, or null.
const void* binaryOf(const sockaddr* address) {
    if (address == nullptr) {
        return nullptr;
    }
    return address->sa_family == AF_INET
               ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in*>(address)->sin_addr)
               : &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
}

// "192.0.2.7/24"
std::string addressText(const ifaddrs& entry, int family) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    ::inet_ntop(family, binaryOf(entry.ifa_addr), text.data(), text.size());
    const auto* mask = static_cast<const unsigned char*>(binaryOf(entry.ifa_netmask));
    const std::size_t size = family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
    int bits = 0;
    for (std::size_t i = 0; mask != nullptr && i < size; ++i) {
        bits += std::popcount(mask[i]);
    }
    return std::string(text.data()) + '/' + std::to_string(bits);
}

std::vector<std::string> addressesOf(const std::string& interface) {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) {
        return {};
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    std::vector<std::string> addresses;
    for (const int family : {AF_INET, AF_INET6}) {
        for (const ifaddrs* each = list; each != nullptr; each = each->ifa_next) {
            if (each->ifa_addr != nullptr && each->ifa_addr->sa_family == family &&
                interface == each->ifa_name) {
                addresses.push_back(addressText(*each, family));
            }
        }
    }
    return addresses;
}

}  // namespace

Fact<InterfaceInUse> readInterfaceInUse(const Places& places) {
    Fact<InterfaceInUse> found = InterfaceQuestions(places.limit).ask();
    if (!found.isKnown() || !places.kernel) {
        return found;
    }
    InterfaceInUse result = found.take();
    result.addresses = addressesOf(result.name);
    result.linkedFor = readLinkAge(static_cast<int>(::if_nametoindex(result.name.c_str())));
    return result;
}

std::optional<RadioSwitch> blockOfRadio(const Places& places) {
    Facts facts;
    readLinks(facts, places.root);
    std::erase_if(facts.links, [](const Link& each) { return !each.isWireless; });
    if (facts.links.size() > 1) {
        const auto found = InterfaceQuestions(places.limit).ask();
        std::erase_if(facts.links,
                      [&](const Link& each) { return !found.isKnown() || each.name != found->name; });
    }
    for (const Link& link : facts.links) {
        const auto blocking = std::find_if(link.switches.begin(), link.switches.end(),
                                           [](const RadioSwitch& each) { return each.soft || each.hard; });
        if (blocking != link.switches.end()) {
            return *blocking;
        }
    }
    return std::nullopt;
}

bool supplicantHangs(std::chrono::milliseconds limit) {
    return InterfaceQuestions(limit).ask().is(Obstacle::noAnswer);
}

}  // namespace kaz::inspection
