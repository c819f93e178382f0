#include "kazwifictl/input/secret.h"

#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <string_view>
#include <utility>

#include "base/errno_text.h"
#include "base/file_descriptor.h"
#include "base/non_copyable.h"
#include "base/wipe.h"
#include "base/write_all.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

constexpr std::size_t longestLine = 4096;

// Switches off the echo of a terminal.
class EchoOff : NonCopyable {
  public:
    explicit EchoOff(int tty) : tty_(tty) { hide(); }
    ~EchoOff() { show(); }

    void hide() {
        ::tcgetattr(tty_, &former_);
        termios silent = former_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
        ::tcsetattr(tty_, TCSAFLUSH, &silent);  // discards what was typed before the question
        hidden_ = true;
    }
    // Discards a half-typed password, except with TCSADRAIN: what is typed after the answer is for the next reader of
    // the terminal.
    void show(int action = TCSAFLUSH) {
        if (std::exchange(hidden_, false)) {
            ::tcsetattr(tty_, action, &former_);
        }
    }

  private:
    int tty_;
    bool hidden_ = false;
    termios former_{};
};

// A line in memory that is reserved once and never moves, so that no copy of a part of it is left behind. The
// destructor wipes the line, unless take() was called.
class SecretLine : NonCopyable {
  public:
    SecretLine() { text_.reserve(longestLine + 1); }
    ~SecretLine() { wipe(text_); }

    // False when the line is now longer than longestLine.
    bool append(std::string_view more) {
        text_ += more.substr(0, text_.capacity() - text_.size());
        return text_.size() <= longestLine;
    }
    void dropCarriageReturn() {
        if (!text_.empty() && text_.back() == '\r') {
            text_.pop_back();
        }
    }
    std::string take() { return std::move(text_); }

  private:
    std::string text_;
};

// The Failure when the password cannot be read from `name`.
Failure cannotRead(const std::string& name, const std::string& why) {
    return {ExitCode::failed, "cannot read the password from " + name, why,
            "a file whose first line is the password"};
}

// Reads once and appends the result; false at the end of the line or of the file.
bool readSome(int fd, SecretLine& line, const std::string& name) {
    std::array<char, 512> buffer{};
    const ssize_t count = ::read(fd, buffer.data(), buffer.size());
    if (count < 0) {
        if (errno == EINTR || errno == EAGAIN) {
            return true;
        }
        throw CommandFailed(cannotRead(name, errnoText(errno)));
    }
    const std::string_view read(buffer.data(), static_cast<std::size_t>(count));
    const std::size_t end = read.find('\n');
    const bool fits = line.append(read.substr(0, end));
    ::explicit_bzero(buffer.data(), buffer.size());
    if (!fits) {
        throw CommandFailed(cannotRead(name, "its first line is longer than 4096 bytes"));
    }
    return count > 0 && end == std::string_view::npos;
}

// Reads a line. Calls `stopped` when `stops`, which may be null, has a signal.
void readLine(int fd, SecretLine& line, const std::string& name, Interrupts& interrupts,
              CaughtSignals* stops = nullptr, const std::function<void()>& stopped = {}) {
    for (bool more = true; more;) {
        std::array<pollfd, 3> waited{{{fd, POLLIN, 0},
                                      {interrupts.fd(), POLLIN, 0},
                                      {stops == nullptr ? -1 : stops->fd(), POLLIN, 0}}};
        ::poll(waited.data(), waited.size(), -1);
        interrupts.check();
        if (stops != nullptr && waited[2].revents != 0 && stops->take()) {
            stopped();
        } else if (waited[0].revents != 0) {
            more = readSome(fd, line, name);
        }
    }
}

FileDescriptor openTerminal(const std::string& what, const std::string& advice) {
    FileDescriptor tty(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (tty.get() < 0) {
        throw CommandFailed({ExitCode::usage, what, "there is no terminal", advice});
    }
    return tty;
}

}  // namespace

std::string askSecret(const std::string& question, Interrupts& interrupts) {
    const FileDescriptor tty = openTerminal("cannot ask for the password",
                                            "--password-file FILE, or the password on the standard input");
    CaughtSignals stops({SIGTSTP});  // else Ctrl-Z would stop the process while the echo is off
    EchoOff echo(tty.get());
    writeAll(tty.get(), question);
    SecretLine answer;
    try {
        readLine(tty.get(), answer, "the terminal", interrupts, &stops, [&] {
            echo.show();
            static_cast<void>(::raise(SIGSTOP));
            echo.hide();
            writeAll(tty.get(), question);
        });
    } catch (const Interrupted&) {
        writeAll(tty.get(), "\n");
        throw;
    }
    echo.show(TCSADRAIN);
    writeAll(tty.get(), "\n");
    return answer.take();
}

std::string askLine(const std::string& question, Interrupts& interrupts) {
    const FileDescriptor tty = openTerminal("cannot ask", {});
    ::tcflush(tty.get(), TCIFLUSH);  // discards what was typed before the question
    writeAll(tty.get(), question);
    SecretLine answer;
    try {
        readLine(tty.get(), answer, "the terminal", interrupts);
    } catch (const Interrupted&) {
        writeAll(tty.get(), "\n");
        throw;
    }
    return answer.take();
}

bool askYes(const std::string& question, Interrupts& interrupts) {
    const std::string answer = askLine(question + " [y/N] ", interrupts);
    return answer == "y" || answer == "Y" || answer == "yes";
}

std::string readSecret(const std::string& path, Interrupts& interrupts) {
    const bool standardInput = path == "-";
    const std::string name = standardInput ? "the standard input" : harmless(path, true);
    const FileDescriptor file(standardInput ? ::dup(STDIN_FILENO)
                                            : ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0) {
        throw CommandFailed(cannotRead(name, errnoText(errno)));
    }
    SecretLine line;
    readLine(file.get(), line, name, interrupts);
    line.dropCarriageReturn();
    return line.take();
}

}  // namespace kaz::ctl
