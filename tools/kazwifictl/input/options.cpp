#include "kazwifictl/input/options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "base/hex.h"
#include "kazwifictl/input/help.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/text_of.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {
namespace {

constexpr std::string_view noSimulateFile = "built-in";

const std::map<std::string, ColourChoice> colours{
    {"auto", ColourChoice::automatic}, {"always", ColourChoice::always}, {"never", ColourChoice::never}};

// An option with a number of seconds, up to a day.
template <typename Time>
void addSeconds(CLI::App& app, const std::string& name, Time& time, const std::string& description) {
    const auto set = [&time](double seconds) {
        time = std::chrono::milliseconds(std::llround(seconds * 1000));
    };
    const auto isTime = [](const std::string& text) {
        constexpr double day = 86400;
        double seconds = 0;
        const char* end = text.data() + text.size();
        const auto [read, error] = std::from_chars(text.data(), end, seconds);
        const bool valid = error == std::errc() && read == end && seconds >= 0 && seconds <= day;
        return valid ? std::string() : fmt::format("\"{}\" is not a number of seconds from 0 to 86400", text);
    };
    app.add_option_function<double>(name, set, description)
        ->type_name("SECONDS")
        ->check(CLI::Validator(isTime, ""));
}

class Parser {
  public:
    explicit Parser(Options options, bool prompt) : options_(std::move(options)), prompt_(prompt) {
        app_.require_subcommand(0, 1);
        app_.set_help_flag("-h,--help", "Show this help");
        app_.formatter(std::make_shared<HelpLayout>());
        app_.add_flag("--json", options_.json, "Write results as JSON");
        if (!prompt_) {
            addGlobals();
        }
        addPlainCommands();
        addConnect();
        CLI::App* forget = command(Command::forget, "Delete a saved network, and end its connection.");
        addSsid(forget)->required(false);
        forget->add_flag("--all", options_.all, "All saved networks, also those out of range");
        addWait();
        addHelp();
    }

    Parsed parse(const std::vector<std::string>& arguments) {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        try {
            app_.parse(std::move(reversed));
        } catch (const CLI::CallForHelp&) {
            return help();
        } catch (const CLI::CallForVersion& version) {
            return Message{version.what() + std::string("\n")};
        } catch (const CLI::ExtrasError&) {
            return notExpected();
        } catch (const CLI::RequiredError&) {
            return usage("the name of the network is missing", prompt_ ? "list" : "kazwifictl list");
        } catch (const CLI::ArgumentMismatch& error) {
            return usage(withoutValue(error.what()));
        } catch (const CLI::ParseError& error) {
            return usage(error.what());
        } catch (const CommandFailed& failed) {
            return failed.failure();
        }
        return finish();
    }

    std::vector<std::string> commandNames() const {
        std::vector<std::string> names;
        for (const CLI::App* each :
             app_.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); })) {
            names.push_back(each->get_name());
        }
        return names;
    }

    std::vector<std::string> optionNames(const std::string& command) const {
        std::vector<std::string> names;
        for (const CLI::App* each :
             app_.get_subcommands([&](const CLI::App* sub) { return sub->check_name(command); })) {
            for (const CLI::Option* option :
                 each->get_options([](const CLI::Option* one) { return !one->get_lnames().empty(); })) {
                names.push_back("--" + option->get_lnames().front());
            }
            // --help goes last; CLI11 has it first.
            std::rotate(names.begin(), names.begin() + 1, names.end());
        }
        return names;
    }

  private:
    void addGlobals() {
        const auto setColour = [this](const std::string& word) {
            if (!colours.contains(word)) {
                throw CommandFailed(
                    usage(fmt::format("unknown word \"{}\"", word), "--color with auto, always or never"));
            }
            options_.colour = colours.at(word);
        };
        app_.add_option_function<std::string>("--color,--colour", setColour, "When to use colours");
        app_.add_flag("-v,--verbose", options_.verbose, "Write the library's log to stderr");
        app_.add_flag("--simulate{" + std::string(noSimulateFile) + "}", options_.simulate,
                      "Use a simulated device");
        addSeconds(app_, "--start-wait", options_.startWait, "Seconds to wait for Wi-Fi to start");
        app_.set_version_flag("--version", "kazwifictl " KAZWIFICTL_VERSION);
    }

    void addPlainCommands() {
        command(Command::status, "Show whether Wi-Fi is on, and the connection.");
        command(Command::on, "Switch Wi-Fi on, now and after the next start of the device.");
        command(Command::off, "Switch Wi-Fi off, now and after the next start of the device.");
        command(Command::scan, "Scan for networks, then list those in range.");
        CLI::App* list =
            command(Command::list, "List the networks in range: the one in use, then the strongest.");
        list->add_flag("--names", options_.namesOnly, "Only the names that can be typed, one per line");
        list->add_flag("--saved", options_.savedOnly, "Only saved networks");
        command(Command::disconnect, "End the connection. The network stays saved.");
        command(Command::monitor, "Show every change until interrupted.");
        command(Command::doctor, "Find what is wrong with this device, and what mends it.");
        command(Command::report, "Write a file for a bug report, without passwords, names and addresses.")
            ->add_option("FILE", options_.file, "The new file")
            ->type_name("")
            ->required();
        const auto setCountry = [this](std::string word) {
            for (char& letter : word) {
                letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
            }
            const bool letters = std::all_of(word.begin(), word.end(),
                                             [](char letter) { return letter >= 'A' && letter <= 'Z'; });
            if (word.size() != 2 || (!letters && word != "00")) {
                throw CommandFailed(usage(fmt::format("\"{}\" is no country", word),
                                          "two letters, such as FI; 00 for what every country allows"));
            }
            options_.country = word;
        };
        command(Command::country, "Show or set the country whose radio rules apply.")
            ->add_option_function<std::string>("CC", setCountry, "Two letters, such as FI")
            ->type_name("");
    }

    // Not a Command, because it is done when the line has been parsed.
    void addHelp() {
        CLI::App* sub = app_.add_subcommand("help", "Show help, of a command if it is named.");
        sub->group("")->fallthrough();
        sub->add_option_function<std::string>(
               "COMMAND", [this](const std::string& command) { help_ = command; }, "The command")
            ->type_name("");
        sub->callback([this] { help_ = help_.value_or(std::string()); });
    }

    void addConnect() {
        CLI::App* sub = command(Command::connect, "Connect to a network. A saved one needs only its name.");
        ConnectOptions& connect = options_.connect;
        const auto addText = [sub](const char* name, auto& text, const char* type, const char* description) {
            sub->add_option(name, text, description)->type_name(type);
        };
        addSsid(sub);
        const auto setSecurity = [this](const std::string& word) {
            options_.connect.security = securityFromName(word);
            if (!options_.connect.security) {
                throw CommandFailed(usage(fmt::format("unknown security \"{}\"", word),
                                          fmt::format("one of {}", securityNames())));
            }
        };
        sub->add_option_function<std::string>("--security", setSecurity, securityNames())->type_name("WORD");
        sub->add_flag("--hidden", connect.hidden, "The network does not announce its name");
        addText("--password-file", connect.passwordFile, "FILE", "File with the password; - is stdin");
        addText("--identity", connect.identity, "NAME", "EAP identity");
        addText("--anonymous-identity", connect.anonymousIdentity, "NAME", "EAP outer identity");
        addText("--eap", connect.eapMethod, "METHOD", "MSCHAPV2, PEAP, PWD, TLS or TTLS");
        addText("--phase2", connect.phase2Method, "METHOD", "GTC, MSCHAP, MSCHAPV2 or PAP");
        addText("--ca-file", connect.caFile, "FILE", "CA that the EAP server must have");
        addText("--domain", connect.domain, "NAME", "Domain that the EAP server must have");
        addText("--client-cert", connect.clientCert, "FILE", "Certificate of this device");
        addText("--private-key", connect.privateKey, "FILE", "Its key, instead of the password");
        addSeconds(*sub, "--wait", connect.wait, "Seconds to wait (30); 0 returns at once");
        sub->add_flag("--keep", connect.keep, "Keep a new network saved even if connecting fails");
        sub->add_flag("--replace", connect.replace, "Replace the settings of a saved network");
        sub->footer("Example: kazwifictl connect Lab --hidden --security wpa3 --password-file key");
    }

    CLI::App* command(Command command, const std::string& description) {
        CLI::App* sub = app_.add_subcommand(std::string(nameOf(command)), description);
        sub->fallthrough();
        sub->callback([this, command] { options_.command = command; });
        return sub;
    }

    CLI::Option* addSsid(CLI::App* command) {
        command->add_flag("--hex", hex_, "SSID is given in hexadecimal digits");
        return command->add_option("SSID", options_.ssid, "The network's name")
            ->each([this](const std::string&) { named_ = true; })
            ->type_name("")
            ->required();
    }

    void addWait() {
        CLI::App* sub = command(Command::wait, "Wait until a state is reached.");
        const auto setState = [this](const std::string& word) {
            constexpr std::array states{WaitedState::on, WaitedState::off, WaitedState::connected,
                                        WaitedState::disconnected};
            const auto* const found = std::find_if(
                states.begin(), states.end(), [&word](WaitedState state) { return nameOf(state) == word; });
            if (found == states.end()) {
                throw CommandFailed(usage(fmt::format("unknown state \"{}\"", word),
                                          "one of on, off, connected, disconnected"));
            }
            options_.waitedState = *found;
        };
        sub->add_option_function<std::string>("--for", setState,
                                              "on, off, connected (the default), disconnected")
            ->type_name("STATE");
        addSeconds(*sub, "--timeout", options_.timeout, "Seconds to wait; without it for ever");
    }

    Parsed finish() {
        if (help_) {
            return helpFor(*help_);
        }
        if (options_.simulate == noSimulateFile) {
            options_.simulate->clear();
        }
        if (options_.command == Command::forget && named_ == options_.all) {
            return named_ ? usage("--all and a name exclude each other", "one of them")
                          : usage("the name of the network is missing",
                                  prompt_ ? "list --saved" : "kazwifictl list --saved");
        }
        if (hex_) {
            const auto bytes = fromHex(options_.ssid);
            if (!bytes) {
                return usage(fmt::format("\"{}\" is not hexadecimal", options_.ssid),
                             "two hexadecimal digits per byte");
            }
            options_.ssid = *bytes;
        }
        return options_;
    }

    Failure usage(const std::string& why, const std::string& advice = {}) const {
        const std::string help = prompt_ ? "help" : "kazwifictl --help";
        return {ExitCode::usage, prompt_ ? "cannot parse the line" : "cannot parse the command line",
                harmless(why, true), advice.empty() ? help : advice};
    }

    // An unexpected argument may be a password. So the message repeats only an option's name or an unknown command.
    Failure notExpected() const {
        const std::vector<std::string> extras = app_.remaining(true);
        const auto option = std::find_if(extras.begin(), extras.end(),
                                         [](const std::string& extra) { return extra.starts_with('-'); });
        if (option != extras.end()) {
            const std::string name = option->substr(0, option->find('='));
            const bool password = name == "--password" || name == "-p";
            return usage(fmt::format("unknown option {}", name),
                         password ? "--password-file FILE; a password is never an argument, because other "
                                    "users could read it"
                                  : "");
        }
        const auto subs = app_.get_subcommands();
        if (subs.empty() && !extras.empty()) {
            return usage(fmt::format("unknown command \"{}\"", extras.front()));
        }
        const std::string name = subs.empty() ? std::string() : subs.front()->get_name();
        if (name != nameOf(Command::connect) && name != nameOf(Command::forget)) {
            return usage(fmt::format("{} takes no argument", name),
                         prompt_ ? "help " + name : "kazwifictl help " + name);
        }
        return usage("too many arguments", "quotes around a name that contains blanks");
    }

    // CLI11's text begins with the option: "--wait: 1 required SECONDS missing".
    static std::string withoutValue(const std::string& text) {
        const std::string option = text.substr(0, text.find(':'));
        return option.starts_with('-') ? option + " needs a value" : text;
    }

    Parsed helpFor(const std::string& command) const {
        if (command.empty()) {
            return Message{prompt_ ? promptHelpText() : helpText()};
        }
        const auto subs = app_.get_subcommands([&](const CLI::App* sub) { return sub->check_name(command); });
        if (subs.empty()) {
            return usage(fmt::format("unknown command \"{}\"", command));
        }
        return Message{subs.front()->help(prompt_ ? "" : "kazwifictl")};
    }

    Message help() const {
        const auto subs = app_.get_subcommands();
        if (subs.empty()) {
            return {prompt_ ? promptHelpText() : helpText()};
        }
        return {subs.front()->help(prompt_ ? "" : "kazwifictl")};
    }

    Options options_;
    std::optional<std::string> help_;  // of this command; empty: of all
    bool hex_ = false;
    bool named_ = false;  // an SSID is given
    bool prompt_;
    CLI::App app_{"Manages the Wi-Fi of this device", "kazwifictl"};
};

}  // namespace

std::string_view nameOf(Command command) {
    return textOf(command, {{Command::status, "status"},
                            {Command::on, "on"},
                            {Command::off, "off"},
                            {Command::scan, "scan"},
                            {Command::list, "list"},
                            {Command::connect, "connect"},
                            {Command::disconnect, "disconnect"},
                            {Command::forget, "forget"},
                            {Command::monitor, "monitor"},
                            {Command::wait, "wait"},
                            {Command::doctor, "doctor"},
                            {Command::report, "report"},
                            {Command::country, "country"},
                            {Command::prompt, ""}});
}

std::string_view nameOf(WaitedState state) {
    return textOf(state, {{WaitedState::on, "on"},
                          {WaitedState::off, "off"},
                          {WaitedState::connected, "connected"},
                          {WaitedState::disconnected, "disconnected"}});
}

std::vector<std::string> commandNames() {
    return Parser({}, true).commandNames();
}

std::vector<std::string> optionNames(const std::string& command) {
    return Parser({}, true).optionNames(command);
}

bool ConnectOptions::describesNetwork() const {
    return replace || security || hidden || passwordFile || !identity.empty() || !anonymousIdentity.empty() ||
           !eapMethod.empty() || !phase2Method.empty() || describesCertificates();
}

bool ConnectOptions::describesCertificates() const {
    return !caFile.empty() || !domain.empty() || !clientCert.empty() || !privateKey.empty();
}

bool asksForJson(const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    return std::find(arguments.begin(), end, "--json") != end;
}

Parsed parseCommandLine(const std::vector<std::string>& arguments) {
    return Parser({}, false).parse(arguments);
}

Parsed parsePromptLine(const std::vector<std::string>& arguments, const Options& base) {
    Options options = base;
    options.command = Command::prompt;
    // Messages and the manual page write the program's name before a command, so it is accepted here too.
    const bool named = !arguments.empty() && arguments.front() == "kazwifictl";
    return Parser(std::move(options), true).parse({arguments.begin() + (named ? 1 : 0), arguments.end()});
}

}  // namespace kaz::ctl
