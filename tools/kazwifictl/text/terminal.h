#pragma once

#include <string>
#include <string_view>

namespace kaz::ctl {

enum class ColourChoice { automatic, always, never };

// What the output may use.
struct Terminal {
    bool interactive = false;  // a terminal, not a file or a pipe: lines may be rewritten
    bool utf8 = false;         // characters beyond ASCII may be written
    bool colour = false;
    int columns = 0;  // maximum width of a line; 0: no limit
};

// The terminal behind a file descriptor. UTF-8 depends on the locale, so call setlocale() first. Colours
// depend on `choice`; when that is automatic, on NO_COLOR and TERM. The width is the one that the terminal
// reports, or else COLUMNS, or else 80.
Terminal terminalAt(int fd, ColourChoice choice);

// Adds colours and weights to a text. Without colours, returns the text unchanged.
class Style {
  public:
    explicit Style(bool colour) : colour_(colour) {}

    std::string bold(std::string_view text) const { return wrapped("1", text); }
    std::string dim(std::string_view text) const { return wrapped("2", text); }
    std::string good(std::string_view text) const { return wrapped("32", text); }
    std::string bad(std::string_view text) const { return wrapped("31", text); }
    // Green, yellow or red, depending on the signal strength.
    std::string bySignal(int dBm, std::string_view text) const;

  private:
    std::string wrapped(std::string_view code, std::string_view text) const;

    bool colour_;
};

}  // namespace kaz::ctl
