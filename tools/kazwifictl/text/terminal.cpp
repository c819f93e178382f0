#include "kazwifictl/text/terminal.h"

#include <fmt/format.h>
#include <langinfo.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "kazwifictl/text/signal_strength.h"

namespace kaz::ctl {
namespace {

bool isSet(const char* variable) {
    const char* value = ::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool colourWanted(bool interactive, ColourChoice choice) {
    if (choice != ColourChoice::automatic) {
        return choice == ColourChoice::always;
    }
    const char* term = ::getenv("TERM");
    const bool capable = term != nullptr && *term != '\0' && std::strcmp(term, "dumb") != 0;
    return interactive && capable && !isSet("NO_COLOR");
}

int columnsAt(int fd) {
    winsize size{};
    if (::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    const char* columns = ::getenv("COLUMNS");
    const long number = columns == nullptr ? 0 : ::strtol(columns, nullptr, 10);
    return number > 0 && number < 10000 ? static_cast<int>(number) : 80;
}

}  // namespace

Terminal terminalAt(int fd, ColourChoice choice) {
    const bool interactive = ::isatty(fd) == 1;
    return {interactive, std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0, colourWanted(interactive, choice),
            interactive ? columnsAt(fd) : 0};
}

std::string Style::bySignal(int dBm, std::string_view text) const {
    constexpr std::array codes{"31", "31", "33", "32", "32"};
    return wrapped(codes.at(static_cast<std::size_t>(barsOf(dBm))), text);
}

std::string Style::wrapped(std::string_view code, std::string_view text) const {
    return colour_ && !text.empty() ? fmt::format("\x1b[{}m{}\x1b[0m", code, text) : std::string(text);
}

}  // namespace kaz::ctl
