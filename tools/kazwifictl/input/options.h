#pragma once

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

enum class Command {
    status,
    on,
    off,
    scan,
    list,
    connect,
    disconnect,
    forget,
    monitor,
    wait,
    doctor,
    report,
    country,
    prompt
};

// The command's name, such as "list". Empty for Command::prompt.
std::string_view nameOf(Command command);

// The commands, without `help` and `quit`, which only the prompt has.
std::vector<std::string> commandNames();

// The options of a command, such as "--hidden". Empty for an unknown command.
std::vector<std::string> optionNames(const std::string& command);

struct ConnectOptions {
    std::optional<wifi::SecurityMode> security;
    bool hidden = false;
    std::string identity;
    std::string anonymousIdentity;
    std::string eapMethod;
    std::string phase2Method;
    std::string caFile;
    std::string domain;
    std::string clientCert;
    std::string privateKey;
    std::optional<std::string> passwordFile;
    std::chrono::milliseconds wait{30000};
    bool keep = false;
    bool replace = false;  // new settings may replace saved ones

    // Whether any option describes the network. Then a saved configuration is not used.
    bool describesNetwork() const;
    bool describesCertificates() const;
};

// What `wait` waits for. `on` and `off`: the supplicant can be used, or does not run.
enum class WaitedState { on, off, connected, disconnected };

// "on", "off", "connected", "disconnected"
std::string_view nameOf(WaitedState state);

struct Options {
    Command command = Command::prompt;
    bool json = false;
    ColourChoice colour = ColourChoice::automatic;
    bool verbose = false;
    std::optional<std::string> simulate;  // a neighbourhood file; empty: the built-in one
    std::chrono::milliseconds startWait{5000};
    bool namesOnly = false;  // of list
    bool savedOnly = false;
    bool all = false;  // of forget
    std::string ssid;  // bytes
    WaitedState waitedState = WaitedState::connected;
    std::optional<std::chrono::milliseconds> timeout;  // of wait; nothing: for ever
    std::string file;                                  // of report
    std::string country;                               // of country: two capital letters; empty: show it
    ConnectOptions connect;
};

// A text to show instead of running a command: help or version.
struct Message {
    std::string text;
};

using Parsed = std::variant<Options, Message, Failure>;

// Whether --json is among the arguments, also if the others are not valid.
bool asksForJson(const std::vector<std::string>& arguments);

// Parses a command line without the program's name. Without a command, the result is Command::prompt.
Parsed parseCommandLine(const std::vector<std::string>& arguments);

// Parses a line typed at the prompt. It has the same commands; all other options come from `base`, the options
// that the program was started with. Without a command, the result is Command::prompt.
Parsed parsePromptLine(const std::vector<std::string>& arguments, const Options& base);

}  // namespace kaz::ctl
