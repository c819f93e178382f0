#pragma once

#include <cerrno>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

using Json = nlohmann::ordered_json;

// A JSON document as one line of ASCII. Other characters become JSON escapes, which cannot control a terminal.
std::string oneLine(const Json& document);

// Writes the results of a command to stdout, as text or JSON, and errors to stderr.
class Output {
  public:
    Output(ColourChoice colour, bool json);

    const Terminal& terminal() const { return out_; }
    const Style& style() const { return style_; }
    bool json() const { return json_; }

    // An SSID in quotes, safe to show on this terminal.
    std::string name(const std::string& ssid) const;

    // A signal strength in colour: bars and dBm.
    std::string signal(int dBm) const;

    // Reads the terminal's width again.
    void refresh();

    // From now on writes results as JSON, or as text.
    void setJson(bool json) { json_ = json; }

    // Writes text for a person, broken between words as fitted() does. Does nothing with --json.
    void say(std::string_view text);

    // Writes a progress line, which the next output replaces. Does nothing with --json, or without a terminal.
    void sayForNow(std::string_view text);

    // Writes a JSON document. Does nothing without --json.
    void show(const Json& document);

    // Writes text that is already in the right form, text or JSON.
    void put(std::string_view text);

    void complain(const Failure& failure);

    // Nobody reads what is written any more. Counts as a write that failed.
    void readerIsGone() { error_ = error_ == 0 ? EPIPE : error_; }

    // good() is false after a write failed; error() is then its errno.
    bool good() const { return error_ == 0; }
    int error() const { return error_; }

  private:
    void write(std::string_view text);

    ColourChoice colour_;
    bool json_;
    Terminal out_;
    Style style_;
    bool passing_ = false;  // the cursor is on a progress line
    int error_ = 0;         // errno of the first failure
};

}  // namespace kaz::ctl
