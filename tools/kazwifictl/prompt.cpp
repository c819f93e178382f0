#include "kazwifictl/prompt.h"

#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

// readline's header needs FILE.
#include <cstdio>

#include <readline/history.h>
#include <readline/readline.h>

#include <array>
#include <cstring>
#include <iterator>
#include <optional>

#include "kazwifictl/command_failed.h"
#include "kazwifictl/commands.h"
#include "kazwifictl/completion.h"
#include "kazwifictl/help.h"
#include "kazwifictl/history_file.h"
#include "kazwifictl/monitor.h"
#include "kazwifictl/observation.h"
#include "kazwifictl/words_of_line.h"

namespace kaz::ctl {
namespace {

const char* promptText() {
    return "kazwifi> ";
}

char* duplicated(const std::string& text) {
    return ::strdup(text.c_str());  // readline frees it
}

// Readline knows one line at a time and calls back without any context, so its state is one object.
class Line {
  public:
    explicit Line(const View& view) : view_(view) {
        instance_ = this;
        rl_readline_name = "kazwifictl";
        rl_attempted_completion_function = complete;
        rl_completer_quote_characters = "'\"";
        rl_filename_quote_characters = " \t\\'\"";
        rl_completer_word_break_characters = " \t";
        rl_variable_bind("mark-directories", "off");
        // That is what the terminal makes of a Ctrl-D typed while a command runs.
        rl_bind_key('\0', takeEndOfFile);
        open();
    }
    ~Line() {
        close();
        instance_ = nullptr;
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    Line(Line&&) = delete;
    Line& operator=(Line&&) = delete;

    // Shows the prompt.
    void open() {
        entered_.reset();
        ended_ = false;
        open_ = true;
        ::rl_callback_handler_install(promptText(), take);
    }

    // Gives the terminal back.
    void close() {
        if (open_) {
            ::rl_callback_handler_remove();
            open_ = false;
        }
    }

    // Reads what has been typed.
    void read() { ::rl_callback_read_char(); }

    bool ended() const { return ended_; }
    const std::optional<std::string>& entered() const { return entered_; }

    // Drops what has been typed, as a shell does on Ctrl-C.
    void clear() {
        ::rl_free_line_state();
        ::rl_callback_sigcleanup();
        static_cast<void>(std::fputs("^C\n", stdout));
        ::rl_replace_line("", 0);
        ::rl_on_new_line();
        ::rl_redisplay();
    }

    // Writes a line above the prompt.
    void above(const std::string& text) {
        ::rl_clear_visible_line();
        static_cast<void>(std::fputs(text.c_str(), stdout));
        ::rl_on_new_line();
        ::rl_forced_update_display();
    }

  private:
    static void take(char* text) {
        Line& line = *instance_;
        line.close();  // before the command writes anything
        line.ended_ = text == nullptr;
        line.entered_ = text == nullptr ? std::string() : std::string(text);
        ::free(text);  // NOLINT(cppcoreguidelines-no-malloc): readline allocated it
    }

    static int takeEndOfFile(int /*count*/, int /*key*/) { return ::rl_execute_next('D' & 0x1f); }

    static char** complete(const char* /*start*/, int from, int /*to*/) {
        rl_attempted_completion_over = 1;
        rl_filename_completion_desired = 1;
        rl_filename_quoting_desired = 1;
        // The words before, whatever quote the one in progress has opened.
        const auto length = static_cast<std::size_t>(from);
        const std::string_view before = std::string_view(rl_line_buffer).substr(0, length);
        const auto last = before.find_last_not_of("'\"");
        const std::string_view whole = before.substr(0, last == std::string_view::npos ? 0 : last + 1);
        instance_->before_ = wordsOfLine(whole).value_or(std::vector<std::string>());
        return ::rl_completion_matches(rl_line_buffer + from, next);
    }

    static char* next(const char* start, int state) {
        Line& line = *instance_;
        if (state == 0) {
            line.candidates_ = completions(line.before_, start, line.view_);
            line.candidate_ = 0;
        }
        return line.candidate_ < line.candidates_.size() ? duplicated(line.candidates_.at(line.candidate_++))
                                                         : nullptr;
    }

    static inline Line* instance_ = nullptr;

    const View& view_;
    bool open_ = false;
    bool ended_ = false;
    std::optional<std::string> entered_;
    std::vector<std::string> before_;
    std::vector<std::string> candidates_;
    std::size_t candidate_ = 0;
};

class Prompt {
  public:
    Prompt(const Options& options, LiveWorkspace& place, Output& output)
        : options_(options), place_(place), output_(output), line_(place.session().view()) {}

    ExitCode run();

  private:
    bool wait();
    void tell();
    bool obey(const std::string& text);
    void execute(const Options& options);

    const Options& options_;
    LiveWorkspace& place_;
    Output& output_;
    HistoryFile history_;
    Line line_;
    ExitCode last_ = ExitCode::done;
};

ExitCode Prompt::run() {
    for (;;) {
        while (wait()) {
        }
        if (line_.ended()) {
            output_.say("\n");
            return last_;
        }
        const std::string text = line_.entered().value_or("");
        if (!obey(text)) {
            return last_;
        }
        line_.open();
    }
}

// Waits until something happens; false when a line has been entered.
bool Prompt::wait() {
    std::array<pollfd, 3> waited{{{STDIN_FILENO, POLLIN, 0},
                                  {place_.session().fd(), POLLIN, 0},
                                  {place_.interrupts().fd(), POLLIN, 0}}};
    ::poll(waited.data(), waited.size(), -1);
    if (waited[2].revents != 0) {
        if (const auto signal = place_.interrupts().take()) {
            if (*signal != SIGINT) {
                throw Interrupted(*signal);
            }
            line_.clear();
        }
    }
    if (waited[1].revents != 0) {
        tell();
    }
    if (waited[0].revents != 0) {
        line_.read();
    }
    return !line_.ended() && !line_.entered();
}

// Tells what the device does by itself: its connection and its power, not every network it sees.
void Prompt::tell() {
    ChangeWriter writer(output_);
    Session& session = place_.session();
    std::string text;
    const Observation observation(session, [&](const Event& event) {
        const bool worthTelling = std::holds_alternative<PowerChange>(event.change) ||
                                  std::holds_alternative<ConnectionChange>(event.change);
        if (worthTelling) {
            text += writer.change(session.view(), event, ChangeWriter::WallClock::now());
        }
    });
    session.takeAll();
    if (!text.empty() && !output_.json()) {
        line_.above(text);
    }
}

// False when the prompt is to end.
bool Prompt::obey(const std::string& text) {
    const auto words = wordsOfLine(text);
    if (words && words->empty()) {
        return true;
    }
    history_.add(text);
    if (!words) {
        last_ = ExitCode::usage;
        output_.complain({ExitCode::usage, "cannot understand this", "a quote is not closed", "help"});
        return true;
    }
    if (words->front() == "quit" || words->front() == "exit") {
        return false;
    }
    if (words->front() == "help") {
        output_.put(promptHelpText());
        return true;
    }
    // As messages and the manual write a command.
    const bool named = words->front() == "kazwifictl";
    const Parsed parsed = parsePromptLine({words->begin() + (named ? 1 : 0), words->end()}, options_);
    if (const auto* failure = std::get_if<Failure>(&parsed)) {
        last_ = failure->code;
        output_.complain(*failure);
    } else if (const auto* message = std::get_if<Message>(&parsed)) {
        output_.put(message->text);
    } else {
        execute(std::get<Options>(parsed));
    }
    return true;
}

void Prompt::execute(const Options& options) {
    output_.refresh();
    try {
        last_ = runCommand(options, place_, output_);
    } catch (const Interrupted& interrupted) {
        if (interrupted.signal() != SIGINT) {
            throw;
        }
        last_ = ExitCode::failed;
        output_.complain({ExitCode::failed, "interrupted", {}, {}});
    }
}

}  // namespace

ExitCode runPrompt(const Options& options, LiveWorkspace& place, Output& output) {
    place.look("cannot start", Workspace::Need::nothing);
    return Prompt(options, place, output).run();
}

}  // namespace kaz::ctl
