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

// Edits lines on the terminal with libedit, with history and completion. It changes the terminal's settings only
// during read().
class LineEditor : NonCopyable {
  public:
    // The completions of a word that begins with `start`, after the words `before`.
    using Completions = std::function<std::vector<std::string>(const std::vector<std::string>& before,
                                                               const std::string& start)>;
    // A file descriptor that read() also waits for. read() calls `react` while `fd` is readable.
    struct Source {
        int fd = -1;
        std::function<void()> react;
    };

    LineEditor(Interrupts& interrupts, Source source, Completions completions);
    ~LineEditor();

    // Reads the next line; nothing at end of file. Ctrl-C drops the line, as in a shell; any other signal of
    // Interrupts throws Interrupted. Throws what Source::react throws.
    std::optional<std::string> read();

    // Writes lines above the line that is being edited. Must be called only inside read().
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
    bool offer(const std::vector<std::string>& candidates, const std::string& start, std::size_t from);

    std::string typed() const;
    std::string beforeCursor() const;
    void clear();

    Interrupts& interrupts_;
    Source source_;
    Completions completions_;
    LineHistory history_;
    CaughtSignals* terminalSignals_ = nullptr;  // during read()
    editline* line_;
    bool dropped_ = false;
    std::string ambiguous_;  // the text before the cursor at the last Tab that added nothing
    std::exception_ptr failure_;
};

}  // namespace kaz::ctl
