#pragma once

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>

#include "kazwifictl/commands/attempt.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

// Shows the stages of an attempt as they happen.
class StageLines {
  public:
    explicit StageLines(Output& output) : output_(output) {}

    // Writes what is new since the last call.
    void show(const Attempt& attempt);

  private:
    Output& output_;
    std::size_t shown_ = 0;
    bool searched_ = false;
    std::optional<Stage::Kind> current_;
};

// What the report of an attempt depends on, besides the Attempt.
struct ConnectFacts {
    std::string ssid;
    std::string name;  // the SSID as quoted() writes it
    std::string what;
    wifi::SecurityMode security = wifi::SecurityMode::none;  // of a network that was not saved
    std::optional<ServerTrust> server;                       // of an enterprise network that was not saved
    bool saved = false;                                      // a saved network was asked for by name
    bool inRange = true;                                     // it was in the list
    bool waits = false;     // nothing was requested, because the supplicant connects already
    bool replaced = false;  // the settings replaced saved ones
    std::optional<wifi::SecurityMode> announced;  // in the list, if it does not fit `security`
    std::optional<std::string> similar;           // a known network that may be meant
    std::string again;                            // the command line for another try
    bool kept = true;                             // it is saved now
    bool saveFailed = false;
    std::chrono::milliseconds wait{};
};

// The line that says what is being done.
std::string beginningOf(const ConnectFacts& facts, wifi::SecurityMode mode, const Output& output);

// What is left when a signal ended the command; `linkIsUp` and `keep` say why.
std::string interruptedText(const ConnectFacts& facts, bool linkIsUp, bool keep);

// The report of an attempt. One without an outcome has timed out.
Report connectReport(const Attempt& attempt, const ConnectFacts& facts, const Output& output);

// The report of an attempt that continues in the background.
Report startedReport(const ConnectFacts& facts);

}  // namespace kaz::ctl
