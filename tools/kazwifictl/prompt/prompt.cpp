#include "kazwifictl/prompt/prompt.h"

#include <signal.h>

#include <string>
#include <utility>

#include "kazwifictl/commands/change_writer.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/prompt/completion.h"
#include "kazwifictl/prompt/line_editor.h"
#include "kazwifictl/prompt/words_of_line.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

class Prompt {
  public:
    Prompt(const Options& options, Workspace& place, Output& output)
        : options_(options),
          place_(place),
          output_(output),
          line_(place.interrupts(), {place.session().fd(), [this] { tell(); }},
                [&place](const auto& before, const auto& start) {
                    return completions(before, start, place.session().latest());
                }) {}

    ExitCode run() {
        for (;;) {
            const auto line = line_.read();
            if (!line) {
                output_.say("\n");
                return last_;
            }
            if (!obey(*line)) {
                return last_;
            }
        }
    }

  private:
    // Writes changes of the connection and of Wi-Fi on or off above the line. Leaves out scans and networks.
    void tell() {
        ChangeWriter writer(output_, [](const Snapshot& now) { return stackTrouble(now).why; });
        std::string text;
        place_.session().takeAll([&](const Snapshot& before, const Snapshot& now) {
            text += writer.news(before, now, ChangeWriter::WallClock::now());
        });
        if (!text.empty() && !output_.json()) {
            line_.above(text);
        }
    }

    // Runs one line. False when the prompt must end.
    bool obey(const std::string& text) {
        const auto words = wordsOfLine(text);
        if (words && words->empty()) {
            return true;
        }
        line_.history().add(text);
        if (!words) {
            refuse({ExitCode::usage, "cannot parse the line", "a quote is not closed", "help"},
                   options_.json);
            return true;
        }
        if (words->front() == "quit" || words->front() == "exit") {
            return false;
        }
        const Parsed parsed = parsePromptLine(*words, options_);
        if (const auto* failure = std::get_if<Failure>(&parsed)) {
            refuse(*failure, options_.json || asksForJson(*words));
        } else if (const auto* message = std::get_if<Message>(&parsed)) {
            output_.put(message->text);
        } else {
            execute(std::get<Options>(parsed));
        }
        return true;
    }

    // With `json` also as a document, whose command is not known.
    void refuse(const Failure& failure, bool json) {
        last_ = failure.code;
        output_.setJson(json);
        output_.show(document({}, Json::object(), &failure));
        output_.setJson(options_.json);
        output_.complain(failure);
    }

    void execute(const Options& options) {
        output_.refresh();
        output_.setJson(options.json);
        try {
            last_ = runCommand(options, place_, output_);
        } catch (const Interrupted& interrupted) {
            if (interrupted.signal() != SIGINT) {
                throw;
            }
            last_ = ExitCode::failed;
            output_.complain({ExitCode::failed, "interrupted", {}, {}});
        }
        output_.setJson(options_.json);
    }

    const Options& options_;
    Workspace& place_;
    Output& output_;
    LineEditor line_;
    ExitCode last_ = ExitCode::done;
};

}  // namespace

ExitCode runPrompt(const Options& options, Workspace& place, Output& output) {
    place.look("cannot start the prompt", Workspace::Need::nothing);
    const ExitCode last = Prompt(options, place, output).run();
    place.close();
    return last;
}

}  // namespace kaz::ctl
