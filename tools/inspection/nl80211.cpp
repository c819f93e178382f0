// The kernel's nl80211 over a netlink socket. The kernel answers before send() returns, so nothing waits.
#include "inspection/nl80211.h"

#include <linux/genetlink.h>
#include <linux/netlink.h>
#include <linux/nl80211.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>

#include "base/file_descriptor.h"
#include "inspection/text_file.h"

namespace kaz::inspection {
namespace {

using Attributes = std::map<unsigned, std::string>;

template <typename Header>
Header headerIn(std::string_view bytes) {
    Header header{};
    std::memcpy(&header, bytes.data(), std::min(sizeof header, bytes.size()));
    return header;
}

std::size_t aligned(std::size_t size) {
    return (size + 3) / 4 * 4;
}

Attributes attributesIn(std::string_view bytes) {
    Attributes attributes;
    while (bytes.size() >= sizeof(nlattr)) {
        const auto each = headerIn<nlattr>(bytes);
        const std::size_t size = std::clamp<std::size_t>(each.nla_len, sizeof each, bytes.size());
        attributes[each.nla_type & static_cast<unsigned>(NLA_TYPE_MASK)] =
            bytes.substr(sizeof each, size - sizeof each);
        bytes.remove_prefix(std::min(aligned(size), bytes.size()));
    }
    return attributes;
}

// One request with at most one attribute, and the attributes of its reply.
class Netlink {
  public:
    Netlink() : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC)) {}

    // `flags` may ask for a list; its first entry is returned, or nothing if it is empty.
    Fact<Attributes> ask(std::uint16_t family, std::uint8_t command, std::uint16_t attribute,
                         std::string_view value, std::uint16_t flags = 0) {
        const std::string request = requestOf(family, command, attribute, value, flags);
        std::array<char, 16384> buffer{};
        if (::send(socket_.get(), request.data(), request.size(), 0) < 0) {
            return obstacleOf(errno);
        }
        const ssize_t size = ::recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size < 0) {
            return obstacleOf(errno);
        }
        return read(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
    }

  private:
    template <typename Header>
    static std::string bytesOf(const Header& header) {
        return {reinterpret_cast<const char*>(&header), sizeof header};
    }

    static std::string requestOf(std::uint16_t family, std::uint8_t command, std::uint16_t attribute,
                                 std::string_view value, std::uint16_t flags) {
        std::string body = bytesOf(genlmsghdr{command, 1, 0});
        if (!value.empty()) {
            body += bytesOf(nlattr{static_cast<std::uint16_t>(sizeof(nlattr) + value.size()), attribute});
            body += value;
            body.resize(aligned(body.size()));
        }
        const auto size = static_cast<std::uint32_t>(sizeof(nlmsghdr) + body.size());
        return bytesOf(nlmsghdr{size, family, static_cast<std::uint16_t>(NLM_F_REQUEST | flags), 1, 0}) +
               body;
    }

    static Fact<Attributes> read(std::string_view message) {
        const auto header = headerIn<nlmsghdr>(message);
        message.remove_prefix(std::min(sizeof header, message.size()));
        if (header.nlmsg_type == NLMSG_ERROR) {
            return failureOf<Attributes>(-headerIn<int>(message));
        }
        if (header.nlmsg_type == NLMSG_DONE) {
            return Attributes();
        }
        // Others may follow.
        message = message.substr(0, std::max<std::size_t>(header.nlmsg_len, sizeof header) - sizeof header);
        message.remove_prefix(std::min(sizeof(genlmsghdr), message.size()));
        return attributesIn(message);
    }

    FileDescriptor socket_;
};

template <typename Number>
Number numberOf(const std::string& bytes) {
    Number number{};
    std::memcpy(&number, bytes.data(), std::min(sizeof number, bytes.size()));
    return number;
}

std::string_view bytesOf(const int& number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

// Its number for nl80211.
Fact<std::uint16_t> familyOf(Netlink& netlink) {
    using namespace std::string_view_literals;
    constexpr std::string_view name = "nl80211\0"sv;
    const Fact<Attributes> found = netlink.ask(GENL_ID_CTRL, CTRL_CMD_GETFAMILY, CTRL_ATTR_FAMILY_NAME, name);
    if (!found.isKnown()) {
        return found.isAbsent() ? Fact<std::uint16_t>::absent() : Fact<std::uint16_t>(found.unknown());
    }
    return numberOf<std::uint16_t>(found->at(CTRL_ATTR_FAMILY_ID));
}

Fact<std::string> countryOf(Netlink& netlink, std::uint16_t family) {
    const Fact<Attributes> domain = netlink.ask(family, NL80211_CMD_GET_REG, 0, {});
    return domain.isKnown() && domain->contains(NL80211_ATTR_REG_ALPHA2)
               ? Fact<std::string>(domain->at(NL80211_ATTR_REG_ALPHA2).substr(0, 2))
               : Fact<std::string>();
}

}  // namespace

std::optional<std::chrono::seconds> readLinkAge(int interfaceIndex) {
    Netlink netlink;
    const Fact<std::uint16_t> family = familyOf(netlink);
    if (!family.isKnown()) {
        return std::nullopt;
    }
    // The only station of an interface that is not an access point is its access point.
    const Fact<Attributes> station = netlink.ask(*family, NL80211_CMD_GET_STATION, NL80211_ATTR_IFINDEX,
                                                 bytesOf(interfaceIndex), NLM_F_DUMP);
    if (!station.isKnown() || !station->contains(NL80211_ATTR_STA_INFO)) {
        return std::nullopt;
    }
    const Attributes info = attributesIn(station->at(NL80211_ATTR_STA_INFO));
    const auto age = info.find(NL80211_STA_INFO_CONNECTED_TIME);
    return age == info.end() ? std::nullopt
                             : std::optional(std::chrono::seconds(numberOf<std::uint32_t>(age->second)));
}

Fact<std::string> readKernelCountry() {
    Netlink netlink;
    const Fact<std::uint16_t> family = familyOf(netlink);
    return family.isKnown() ? countryOf(netlink, *family)
                            : (family.isAbsent() ? Fact<std::string>::absent() : family.unknown());
}

void readRadios(Facts& facts) {
    Netlink netlink;
    const Fact<std::uint16_t> known = familyOf(netlink);
    if (!known.isKnown()) {
        facts.country = known.isAbsent() ? Fact<std::string>::absent() : Fact<std::string>(known.unknown());
        return;
    }
    const std::uint16_t family = *known;
    facts.country = countryOf(netlink, family);
    for (Link& link : facts.links) {
        if (!link.isWireless) {
            continue;
        }
        const Fact<Attributes> saving =
            netlink.ask(family, NL80211_CMD_GET_POWER_SAVE, NL80211_ATTR_IFINDEX, bytesOf(link.index));
        if (saving.isKnown() && saving->contains(NL80211_ATTR_PS_STATE)) {
            link.powerSave = numberOf<std::uint32_t>(saving->at(NL80211_ATTR_PS_STATE)) == NL80211_PS_ENABLED;
        }
    }
}

}  // namespace kaz::inspection
