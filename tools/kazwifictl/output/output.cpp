#include "kazwifictl/output/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/unicode.h"
#include "kazwifictl/text/wrapping.h"

namespace kaz::ctl {

std::string oneLine(const Json& document) {
    return document.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n';
}

Output::Output(ColourChoice colour, bool json)
    : colour_(colour), json_(json), out_(terminalAt(STDOUT_FILENO, colour)), style_(out_.colour) {}

std::string Output::name(const std::string& ssid) const {
    const std::string text = quoted(ssid, out_.utf8);
    return out_.interactive ? isolated(text) : text;
}

std::string Output::signal(int dBm) const {
    return style_.bySignal(dBm, barsText(dBm, out_.utf8) + ' ' + std::to_string(dBm) + " dBm");
}

void Output::refresh() {
    out_ = terminalAt(STDOUT_FILENO, colour_);
}

void Output::say(std::string_view text) {
    if (!json_) {
        write(fitted(text, out_.columns));
    }
}

// A line that fills the terminal could not be erased.
void Output::sayForNow(std::string_view text) {
    if (!json_ && out_.interactive) {
        write(cutTo(text, out_.columns - 1, out_.utf8 ? "…" : "~"));
        passing_ = true;
    }
}

void Output::show(const Json& document) {
    if (json_) {
        write(oneLine(document));
    }
}

void Output::put(std::string_view text) {
    if (!text.empty()) {
        write(text);
    }
}

void Output::complain(const Failure& failure) {
    write({});
    const Terminal err = terminalAt(STDERR_FILENO, ColourChoice::never);
    const std::string line = errorText(failure, err.interactive ? err.columns : 0) + '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

void Output::write(std::string_view text) {
    if (passing_) {
        passing_ = false;
        static_cast<void>(std::fputs("\r\x1b[K", stdout));
    }
    const bool written = text.empty() || std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if ((std::fflush(stdout) != 0 || !written) && error_ == 0) {
        error_ = errno == 0 ? EIO : errno;
    }
}

}  // namespace kaz::ctl
