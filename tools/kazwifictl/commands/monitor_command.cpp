#include <signal.h>

#include "kazwifictl/commands/change_writer.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/session/observation.h"
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
    ChangeWriter writer(output);
    Session::Wake wake = Session::Wake::event;
    while (wake == Session::Wake::event) {
        wake = session.next(Clock::now() + Session::firstStateSettles);
    }
    if (wake == Session::Wake::timedOut) {
        output.put(writer.begin(session.view(), WallClock::now()));
        const Observation observation(session, [&](const Event& event) {
            output.put(writer.change(session.view(), event, wallTimeOf(event.time)));
        });
        wake = session.until(Clock::time_point::max(), [&](const View&) { return !output.good(); });
    }
    if (wake == Session::Wake::interrupted && session.signal() == SIGINT && output.terminal().interactive) {
        output.say("\n");  // after the ^C that the terminal shows
    }
    return {};
}

}  // namespace kaz::ctl
