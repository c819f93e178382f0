#include "kazwifictl/prompt/line_editor.h"

#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

// libedit's header needs FILE.
#include <cstdio>

#include <histedit.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cwchar>
#include <utility>

#include "kazwifictl/prompt/words_of_line.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/terminal.h"
#include "kazwifictl/text/unicode.h"

namespace kaz::ctl {
namespace {

constexpr std::string_view prompt = "kazwifi> ";
constexpr wchar_t ctrlC = L'\x03';
constexpr wchar_t ctrlD = L'\x04';

void put(std::string_view text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
    static_cast<void>(std::fflush(stdout));
}

int columnsOfTerminal() {
    return terminalAt(STDOUT_FILENO, ColourChoice::never).columns;
}

std::string commonStart(const std::vector<std::string>& words) {
    std::string common;
    for (const CodePoint& point : codePointsOf(words.front())) {
        const std::string longer = common + std::string(point.bytes);
        if (!std::all_of(words.begin(), words.end(),
                         [&](const std::string& word) { return word.starts_with(longer); })) {
            break;
        }
        common = longer;
    }
    return common;
}

// `word`, quoted for wordsOfLine() where needed. Unless it is `whole`, the quote stays open for more text.
std::string asTyped(const std::string& word, bool whole) {
    if (word.find_first_of(" \t\\'\"") == std::string::npos) {
        return whole ? word + ' ' : word;
    }
    const std::string quoted = singleQuoted(word);
    return whole ? quoted + ' ' : quoted.substr(0, quoted.size() - 1);
}

// The words in columns, filled from top to bottom. As many columns as fit the terminal.
std::string inColumns(const std::vector<std::string>& words) {
    int widest = 0;
    for (const std::string& word : words) {
        widest = std::max(widest, columnsOf(word) + 2);
    }
    const auto columns = static_cast<std::size_t>(std::max(1, columnsOfTerminal() / std::max(1, widest)));
    const std::size_t lines = (words.size() + columns - 1) / columns;
    std::string text;
    for (std::size_t line = 0; line < lines; ++line) {
        for (std::size_t at = line; at < words.size(); at += lines) {
            text += at + lines < words.size() ? paddedTo(words.at(at), widest) : words.at(at);
        }
        text += '\n';
    }
    return text;
}

}  // namespace

LineEditor::LineEditor(Interrupts& interrupts, Source source, Completions completions)
    : interrupts_(interrupts),
      source_(std::move(source)),
      completions_(std::move(completions)),
      line_(::el_init("kazwifictl", stdin, stdout, stderr)) {
    if (line_ == nullptr) {
        throw CommandFailed({ExitCode::failed, "cannot start the prompt", "the terminal cannot be used", {}});
    }
    ::el_set(line_, EL_CLIENTDATA, this);
    ::el_set(line_, EL_PROMPT, promptText);
    ::el_set(line_, EL_GETCFN, readKey);
    ::el_set(line_, EL_EDITOR, "emacs");
    ::el_set(line_, EL_HIST, ::history, history_.get());
    bindKeys();
}

LineEditor::~LineEditor() {
    ::el_end(line_);
}

void LineEditor::bindKeys() {
    // Wide, because libedit never frees the copies that it makes of narrow names.
    ::el_wset(line_, EL_ADDFN, L"complete-word", L"Complete a word", call<&LineEditor::complete>);
    ::el_wset(line_, EL_ADDFN, L"drop-line", L"Begin a new line", call<&LineEditor::dropLine>);
    constexpr std::array<std::pair<const char*, const char*>, 11> keys{{
        {"^I", "complete-word"},
        {"^C", "drop-line"},
        {"^D", "em-delete-or-list"},
        {"^R", "em-inc-search-prev"},
        {"\\e[3~", "ed-delete-next-char"},
        {"\\e[1~", "ed-move-to-beg"},
        {"\\e[4~", "ed-move-to-end"},
        {"\\e[H", "ed-move-to-beg"},
        {"\\e[F", "ed-move-to-end"},
        {"\\e[1;5C", "em-next-word"},
        {"\\e[1;5D", "ed-prev-word"},
    }};
    for (const auto& [key, function] : keys) {
        ::el_set(line_, EL_BIND, key, function, nullptr);
    }
    ::el_source(line_, nullptr);  // the user's key bindings in ~/.editrc
}

std::optional<std::string> LineEditor::read() {
    CaughtSignals signals({SIGTSTP, SIGWINCH});
    terminalSignals_ = &signals;
    const char* text = nullptr;
    int length = 0;
    do {
        dropped_ = false;
        ambiguous_.clear();
        ::el_set(line_, EL_PREP_TERM,
                 1);  // el_gets() shows the prompt first: a key typed then would be echoed twice
        ::el_resize(line_);
        text = ::el_gets(line_, &length);
        if (failure_) {
            std::rethrow_exception(std::exchange(failure_, nullptr));
        }
    } while (text == nullptr && dropped_);
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string line(text, static_cast<std::size_t>(length));
    line.erase(line.find_last_not_of("\r\n") + 1);
    return line;
}

void LineEditor::above(const std::string& text) {
    clear();
    put(text);
    ::el_set(line_, EL_REFRESH);
}

LineEditor& LineEditor::of(editline* line) {
    void* self = nullptr;
    ::el_get(line, EL_CLIENTDATA, &self);
    return *static_cast<LineEditor*>(self);
}

char* LineEditor::promptText(editline* /*line*/) {
    static std::string text(prompt);  // libedit wants a char*, not a const char*
    return text.data();
}

// libedit is C, so no exception may pass through it. read() rethrows the exception.
template <LineEditor::Key key>
unsigned char LineEditor::call(editline* line, int /*letter*/) {
    LineEditor& self = of(line);
    try {
        return (self.*key)();
    } catch (...) {
        self.failure_ = std::current_exception();
        return CC_EOF;
    }
}

int LineEditor::readKey(editline* line, wchar_t* key) {
    LineEditor& self = of(line);
    try {
        while (!self.waitForKey(*key)) {
        }
        return *key == ctrlC ? 1 : self.nextCharacter(*key);
    } catch (...) {
        self.failure_ = std::current_exception();
        return -1;
    }
}

// Waits for a key. False when something else has happened. SIGINT counts as the key Ctrl-C.
bool LineEditor::waitForKey(wchar_t& key) {
    std::array<pollfd, 4> waited{{{STDIN_FILENO, POLLIN, 0},
                                  {source_.fd, POLLIN, 0},
                                  {interrupts_.fd(), POLLIN, 0},
                                  {terminalSignals_->fd(), POLLIN, 0}}};
    key = L'\0';
    ::poll(waited.data(), waited.size(), -1);
    if (waited[2].revents != 0) {
        if (const auto signal = interrupts_.take()) {
            if (*signal != SIGINT) {
                throw Interrupted(*signal);
            }
            key = ctrlC;
            return true;
        }
    }
    if (waited[3].revents != 0) {
        if (const auto signal = terminalSignals_->take()) {
            handle(*signal);
        }
    }
    if (waited[1].revents != 0) {
        source_.react();
    }
    return waited[0].revents != 0;
}

void LineEditor::handle(int signal) {
    if (signal == SIGTSTP) {
        ::el_set(line_, EL_PREP_TERM, 0);
        static_cast<void>(::raise(SIGSTOP));
        ::el_set(line_, EL_PREP_TERM, 1);
    }
    ::el_resize(line_);
    above({});
}

// Returns what libedit expects: 1 for a character, 0 at end of file, -1 when reading fails.
int LineEditor::nextCharacter(wchar_t& key) {
    std::mbstate_t state{};
    for (;;) {
        char byte = 0;
        const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return static_cast<int>(count);
        }
        const std::size_t length = std::mbrtowc(&key, &byte, 1, &state);
        if (length <= 1) {
            // The terminal turns a Ctrl-D that was typed during a command into NUL.
            key = key == L'\0' ? ctrlD : key;
            return 1;
        }
        if (length == static_cast<std::size_t>(-1)) {
            state = {};  // skips the invalid bytes; the next byte may begin a character
        }
    }
}

unsigned char LineEditor::complete() {
    const std::string text = beforeCursor();
    SplitLine line = split(text);
    const std::string start = line.words.back();
    line.words.pop_back();
    return offer(completions_(line.words, start), start, line.lastBegins) ? CC_NORM : CC_ERROR;
}

// Replaces the word that begins at `from` by what all candidates share. A second Tab that adds nothing lists the
// candidates.
bool LineEditor::offer(const std::vector<std::string>& candidates, const std::string& start,
                       std::size_t from) {
    if (candidates.empty()) {
        return false;
    }
    const std::string text = beforeCursor();
    const std::string common = commonStart(candidates);
    const bool whole = candidates.size() == 1;
    if (whole || common != start) {
        clear();
        ::el_deletestr(line_, static_cast<int>(codePointsOf(std::string_view(text).substr(from)).size()));
        ::el_insertstr(line_, asTyped(common, whole).c_str());
        ::el_set(line_, EL_REFRESH);
        return true;
    }
    if (text != std::exchange(ambiguous_, text)) {
        return false;
    }
    above(std::string(prompt) + typed() + '\n' + inColumns(candidates));
    return true;
}

// Ctrl-C drops the line, as in a shell.
unsigned char LineEditor::dropLine() {
    put("^C\n");
    const LineInfoW* line = ::el_wline(line_);
    const auto length = static_cast<int>(line->lastchar - line->buffer);
    ::el_cursor(line_, length);
    ::el_deletestr(line_, length);
    dropped_ = true;
    return CC_NEWLINE;
}

std::string LineEditor::typed() const {
    const LineInfo* line = ::el_line(line_);
    return {line->buffer, line->lastchar};
}

std::string LineEditor::beforeCursor() const {
    const LineInfo* line = ::el_line(line_);
    return {line->buffer, line->cursor};
}

// Erases the line from the screen. libedit draws it again on EL_REFRESH.
void LineEditor::clear() {
    const int columns = columnsOf(prompt) + columnsOf(beforeCursor());
    const int rows = columns / std::max(1, columnsOfTerminal());
    put(rows > 0 ? fmt::format("\x1b[{}A\r\x1b[J", rows) : std::string("\r\x1b[J"));
}

}  // namespace kaz::ctl
