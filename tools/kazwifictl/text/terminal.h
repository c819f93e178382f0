#pragma once

#include <string>
#include <string_view>

namespace kaz::ctl {

enum class ColourChoice { automatic, always, never };

// What the output may use.
struct Terminal {
    bool interactive = false;  // somebody may be looking: lines may be rewritten
    bool utf8 = false;         // characters beyond ASCII arrive as such
    bool colour = false;
    int columns = 0;  // lines are to be no longer; 0: no limit
};

// The terminal behind a descriptor. UTF-8 follows the locale, which is to be set; colours follow `choice`,
// and when that is automatic, NO_COLOR and TERM; the width is the terminal's own, or COLUMNS when it has
// none.
Terminal terminalAt(int fd, ColourChoice choice);

// Styles a piece of text, or leaves it plain where there are no colours.
class Style {
  public:
    explicit Style(bool colour) : colour_(colour) {}

    std::string bold(std::string_view text) const { return wrapped("1", text); }
    std::string dim(std::string_view text) const { return wrapped("2", text); }
    std::string good(std::string_view text) const { return wrapped("32", text); }
    std::string bad(std::string_view text) const { return wrapped("31", text); }
    // Green, yellow or red by the strength of a signal.
    std::string bySignal(int dBm, std::string_view text) const;

  private:
    std::string wrapped(std::string_view code, std::string_view text) const;

    bool colour_;
};

}  // namespace kaz::ctl
