#include "kazwifictl/commands/radio_block.h"

#include <fmt/format.h>

#include "inspection/interface_in_use.h"

namespace kaz::ctl {

std::optional<RadioBlock> radioBlock() {
    const auto block = inspection::blockOfRadio();
    if (!block) {
        return std::nullopt;
    }
    if (block->hard) {
        return RadioBlock{"hard", "a switch on the device blocks the radio (rfkill: hard)",
                          "the switch or the key for Wi-Fi on the device"};
    }
    return RadioBlock{"soft", "a program has blocked the radio (rfkill: soft)",
                      fmt::format("echo 0 > {}", (block->path / "soft").string())};
}

}  // namespace kaz::ctl
