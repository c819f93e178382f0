#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/non_copyable.h"
#include "kazwifictl/process/caught_signals.h"
#include "kazwifictl/prompt/line_history.h"

struct editline;  // libedit's

namespace kaz::ctl {

// Edits lines at the terminal, with history and completion. The terminal is the editor's during read() only.
class LineEditor : NonCopyable {
  public:
    // What the word `start` may become after the words `before`.
    using Completions = std::function<std::vector<std::string>(const std::vector<std::string>& before,
                                                               const std::string& start)>;
    // Something else to wait for: `react` is called, inside read(), while `fd` is readable.
    struct Source {
        int fd = -1;
        std::function<void()> react;
    };

    LineEditor(Interrupts& interrupts, Source source, Completions completions);
    ~LineEditor();

    // The next line; nothing at end of file. Ctrl-C drops what has been typed, as a shell does; any other signal
    // is thrown as Interrupted. Throws what Source::react throws.
    std::optional<std::string> read();

    // Writes lines above the one being edited. Inside read() only.
    void above(const std::string& text);

    LineHistory& history() { return history_; }

  private:
    using Key = unsigned char (LineEditor::*)();

    template <Key key>
    static unsigned char call(editline* line, int letter);
    static LineEditor& of(editline* line);
    static int readKey(editline* line, wchar_t* key);
    static char* promptText(editline* line);

    void bindKeys();
    bool waitForKey(wchar_t& key);
    void handle(int signal);
    int nextCharacter(wchar_t& key);

    unsigned char complete();
    unsigned char dropLine();
    unsigned char endOfFile();
    bool offer(const std::vector<std::string>& candidates, const std::string& start, std::size_t from);

    std::string typed() const;
    std::string beforeCursor() const;
    void clear();
    void redraw();

    Interrupts& interrupts_;
    Source source_;
    Completions completions_;
    LineHistory history_;
    CaughtSignals* terminalSignals_ = nullptr;  // during read()
    editline* line_;
    bool dropped_ = false;
    std::string ambiguous_;  // the text before the cursor when Tab last found no more to add
    std::exception_ptr failure_;
};

}  // namespace kaz::ctl
