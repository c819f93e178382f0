#include <signal.h>
#include <unistd.h>

#include "kazwifictl/commands/change_writer.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

using WallClock = ChangeWriter::WallClock;

WallClock::time_point wallTimeOf(Clock::time_point time) {
    return WallClock::now() - std::chrono::duration_cast<WallClock::duration>(Clock::now() - time);
}

}  // namespace

Report monitorChanges(const Options& /*options*/, Workspace& place, Output& output) {
    Session& session = place.act("cannot monitor", Workspace::Need::nothing);
    ChangeWriter writer(output, [](const Snapshot& now) { return stackTrouble(now).why; });
    session.watchReaderOf(STDOUT_FILENO);
    try {
        output.put(writer.begin(session.latest(), WallClock::now()));
        session.until(
            Clock::time_point::max(), [&](const Snapshot&) { return !output.good(); },
            [&](const Snapshot& before, const Snapshot& now) {
                output.put(writer.change(before, now, wallTimeOf(now.time)));
            });
        if (session.readerGone()) {
            output.readerIsGone();
        }
    } catch (const Interrupted& interrupted) {
        if (interrupted.signal() == SIGINT && output.terminal().interactive) {
            output.say("\n");  // after the ^C that the terminal shows
        }
    }
    return {};
}

}  // namespace kaz::ctl
