#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <exception>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "base/errno_text.h"
#include "inspection/interface_in_use.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/input/options.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/process/background.h"
#include "kazwifictl/process/caught_signals.h"
#include "kazwifictl/process/library_log.h"
#include "kazwifictl/process/simulation.h"
#include "kazwifictl/prompt/prompt.h"
#include "kazwifictl/session/workspace.h"
#include "kazwifictl/text/failure.h"

namespace {

using namespace kaz::ctl;

// The exit status, or the signal to die of.
struct End {
    ExitCode code = ExitCode::done;
    int signal = 0;
};

// Called when the state of the system takes long to come.
void sayWhyItTakesLong(Output& output) {
    constexpr std::chrono::milliseconds patience{1000};
    output.sayForNow("waiting for wpa_supplicant...");
    if (kaz::inspection::supplicantHangs(patience)) {
        output.sayForNow("wpa_supplicant does not answer; still waiting...");
    }
}

End run(const Options& options, Background* background) {
    Interrupts interrupts;
    LibraryLog log(options.verbose);
    Output output(options.colour, options.json);
    End end;
    try {
        const bool prompt = options.command == Command::prompt;
        Workspace place(prompt ? Workspace::Kind::prompt : Workspace::Kind::oneCommand, interrupts,
                        options.startWait, background, [&output] { sayWhyItTakesLong(output); });
        end.code = prompt ? runPrompt(options, place, output) : runCommand(options, place, output);
    } catch (const Interrupted& interrupted) {
        output.say("");
        end.signal = interrupted.signal();
    }
    if (output.error() == EPIPE) {
        end.signal = SIGPIPE;  // was ignored until now, so that the command could clean up
    } else if (!output.good()) {
        output.complain({ExitCode::failed, "cannot write the results", kaz::errnoText(output.error()), {}});
        end.code = ExitCode::failed;
    }
    return end;
}

// With `json` also as a document, whose command is not known.
int show(const Failure& failure, bool json) {
    Output output(ColourChoice::never, json);
    output.show(document({}, Json::object(), &failure));
    output.complain(failure);
    return static_cast<int>(failure.code);
}

int start(const Options& options) {
    if (options.command == Command::prompt && ::isatty(STDIN_FILENO) != 1) {
        return show({ExitCode::usage, "no command given", "the prompt needs a terminal as standard input",
                     "kazwifictl --help"},
                    options.json);
    }
    // Otherwise this process would overwrite the metrics file of the device's own program.
    ::unsetenv("KAZ_METRICS_FILE");
    static_cast<void>(::signal(SIGPIPE, SIG_IGN));
    std::unique_ptr<Simulation> simulation;
    if (options.simulate) {
        simulation = std::make_unique<Simulation>(*options.simulate);
    }
    std::unique_ptr<Background> background;
    if (options.command == Command::connect && options.connect.wait.count() == 0) {
        background = std::make_unique<Background>();
    }
    const End end = run(options, background.get());
    simulation.reset();
    if (end.signal != 0) {
        dieOf(end.signal);
    }
    return static_cast<int>(end.code);
}

}  // namespace

int main(int argc, char** argv) {
    static_cast<void>(std::setlocale(LC_CTYPE, ""));
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool json = asksForJson(arguments);
    try {
        const Parsed parsed = parseCommandLine(arguments);
        if (const auto* failure = std::get_if<Failure>(&parsed)) {
            return show(*failure, json);
        }
        if (const auto* message = std::get_if<Message>(&parsed)) {
            Output(ColourChoice::never, false).say(message->text);
            return 0;
        }
        return start(std::get<Options>(parsed));
    } catch (const CommandFailed& failed) {
        return show(failed.failure(), json);
    } catch (const std::exception& error) {
        return show({ExitCode::failed, "unexpected error", error.what(), {}}, json);
    }
}
