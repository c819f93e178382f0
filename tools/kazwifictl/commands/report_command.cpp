#include <fcntl.h>
#include <fmt/format.h>
#include <wifi/version.h>

#include <cerrno>

#include "base/errno_text.h"
#include "base/file_descriptor.h"
#include "base/write_all.h"
#include "doctor/diagnose.h"
#include "inspection/inspect.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/text/ssid_text.h"
#include "report/report.h"

namespace kaz::ctl {

namespace {

// A new file that only its owner may read. An existing file is kept.
void writeNew(const std::string& path, const std::string& text, const std::string& what) {
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.isOpen() || !writeAll(file.get(), text)) {
        throw CommandFailed({ExitCode::failed, what, harmless(path, true) + ": " + errnoText(errno),
                             errno == EEXIST ? "the name of a new file" : "a folder that you may write"});
    }
}

}  // namespace

Report writeReport(const Options& options, Workspace& /*place*/, Output& output) {
    const std::string what = "cannot write a report";
    checkNotSimulated(options, what);
    const inspection::Facts facts = inspection::inspect();
    const std::string text =
        report::reportOf(facts, doctor::diagnose(facts), wifi::versionText, report::lastLog());
    writeNew(options.file, text, what);
    return {
        fmt::format("The report is in {}. It has no password, and tokens in place of names and addresses.\n",
                    harmless(options.file, output.terminal().utf8)),
        {{"file", validUtf8(options.file)}, {"bytes", text.size()}},
        std::nullopt};
}

}  // namespace kaz::ctl
