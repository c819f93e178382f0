#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

using Json = nlohmann::ordered_json;

// One line, ASCII only: what is not is escaped the way JSON does, so that a terminal shows it harmlessly.
std::string oneLine(const Json& document);

// Where a command's results go: text or JSON to stdout, errors to stderr.
class Output {
  public:
    Output(ColourChoice colour, bool json);

    const Terminal& terminal() const { return out_; }
    const Style& style() const { return style_; }
    bool json() const { return json_; }

    // Looks at the terminal's width again.
    void refresh();

    // Text for a person, which JSON output leaves out.
    void say(std::string_view text);

    // Says what is going on where somebody may be looking: a line without an end, replaced by what comes
    // next.
    void sayForNow(std::string_view text);

    // A JSON document, which text output leaves out.
    void show(const Json& document);

    // Text that is in the right form already.
    void put(std::string_view text);

    void complain(const Failure& failure);

    // False when something could not be written, and then why.
    bool good() const { return error_ == 0; }
    int error() const { return error_; }

  private:
    void write(std::string_view text);

    ColourChoice colour_;
    bool json_;
    Terminal out_;
    Style style_;
    bool passing_ = false;  // the cursor is on a line that is to be replaced
    int error_ = 0;         // errno of the first failure
};

}  // namespace kaz::ctl
