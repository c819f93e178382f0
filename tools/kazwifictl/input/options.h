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

enum class Command { status, on, off, scan, list, connect, disconnect, forget, monitor, prompt };

// "list"; the prompt has no name of its own.
std::string_view nameOf(Command command);

// The commands that can be typed at the prompt, without the prompt's own.
std::vector<std::string> commandNames();

// The options of a command, as they are typed: "--hidden". None for what is no command.
std::vector<std::string> optionNames(const std::string& command);

struct ConnectOptions {
    std::optional<wifi::SecurityMode> security;
    bool hidden = false;
    std::string identity;
    std::string anonymousIdentity;
    std::string eapMethod;
    std::string phase2Method;
    std::optional<std::string> passwordFile;
    std::chrono::milliseconds wait{30000};
    bool keep = false;

    // Whether anything says how to connect, so that a saved configuration would not do.
    bool describesNetwork() const;
};

struct Options {
    Command command = Command::prompt;
    bool json = false;
    ColourChoice colour = ColourChoice::automatic;
    bool verbose = false;
    std::optional<std::string> simulate;  // a neighbourhood file; empty: the built-in one
    std::chrono::milliseconds startWait{5000};
    bool namesOnly = false;  // of list
    bool savedOnly = false;
    std::string ssid;  // bytes
    ConnectOptions connect;
};

// A text to show instead of doing anything: help or version.
struct Message {
    std::string text;
};

using Parsed = std::variant<Options, Message, Failure>;

// Understands a command line, without the program's name.
Parsed parseCommandLine(const std::vector<std::string>& arguments);

// Understands a line typed at the prompt: the same commands, with `base` for what the program was called
// with. An empty command line gives Command::prompt.
Parsed parsePromptLine(const std::vector<std::string>& arguments, const Options& base);

}  // namespace kaz::ctl
