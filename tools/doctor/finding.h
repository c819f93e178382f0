#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kaz::doctor {

// The links of the chain from a program to an address, in the order in which one depends on the other.
enum class Link {
    bus,
    systemd,
    rights,
    choice,
    radio,
    unit,
    commandLine,
    configuration,
    rivals,
    running,
    supplicant,
    block,
    interface,
    country,
    networks,
    sae,
    enterprise,
    networkd,
    addresses,
    powerSave,
    clock,
};

// The worst first.
enum class Verdict { broken, doubtful, notLookedAt, ok };

struct Finding {
    Link link;
    Verdict verdict;
    std::string what;                // one sentence; safe to print
    std::string remedy;              // a line for a shell, which mends it; empty if there is none
    std::vector<std::string> ssids;  // bytes: the networks that it is about
};

// "bus", "command-line", "power-save"
std::string_view nameOf(Link link);

// "broken", "doubtful", "not-looked-at", "ok"
std::string_view nameOf(Verdict verdict);

}  // namespace kaz::doctor
