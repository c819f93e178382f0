#include "support/process/running_program.h"

#include "base/checked.h"
#include "base/pipe.h"
#include "base/write_all.h"
#include "support/waiting/waiting.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <utility>

namespace kaz::test {
namespace {

// Everything a child needs, made before the fork: after it only system calls are safe.
class Image {
  public:
    Image(const std::vector<std::string>& command, const Environment& environment) : words_(command) {
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const std::string text = *entry;
            const std::string name = text.substr(0, text.find('='));
            if (!environment.contains(name)) {
                variables_.push_back(text);
            }
        }
        for (const auto& [name, value] : environment) {
            if (!value.empty()) {
                variables_.push_back(name + "=" + value);
            }
        }
        pointTo(words_, argv_);
        pointTo(variables_, envp_);
    }

    [[noreturn]] void become() {
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execvpe(argv_.front(), argv_.data(), envp_.data());
        ::_exit(127);
    }

  private:
    static void pointTo(std::vector<std::string>& texts, std::vector<char*>& pointers) {
        for (std::string& text : texts) {
            pointers.push_back(text.data());
        }
        pointers.push_back(nullptr);
    }

    std::vector<std::string> words_;
    std::vector<std::string> variables_;
    std::vector<char*> argv_;
    std::vector<char*> envp_;
};

}  // namespace

RunningProgram::RunningProgram(const std::vector<std::string>& command, const Environment& environment) {
    Image image(command, environment);
    Pipe input;
    Pipe output;
    Pipe errors;
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(input.reading.get(), STDIN_FILENO);
        ::dup2(output.writing.get(), STDOUT_FILENO);
        ::dup2(errors.writing.get(), STDERR_FILENO);
        ::setsid();  // no terminal to ask at
        image.become();
    }
    input_ = std::move(input.writing);
    output_ = std::move(output.reading);
    errors_ = std::move(errors.reading);
}

RunningProgram::RunningProgram(const std::vector<std::string>& command, const Environment& environment,
                               Terminal terminal) {
    Image image(command, environment);
    winsize size{};
    size.ws_col = terminal.columns;
    size.ws_row = terminal.rows;
    int master = -1;
    int slave = -1;
    if (::openpty(&master, &slave, nullptr, nullptr, &size) != 0) {
        throwErrno("openpty");
    }
    output_ = FileDescriptor(master);
    ::fcntl(master, F_SETFD, FD_CLOEXEC);
    pid_ = ::fork();
    if (pid_ == 0) {
        ::setsid();
        ::ioctl(slave, TIOCSCTTY, 0);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::dup2(slave, standard);
        }
        ::close(slave);
        image.become();
    }
    ::close(slave);
}

RunningProgram::~RunningProgram() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
}

void RunningProgram::send(const std::string& text) const {
    if (!writeAll((input_.isOpen() ? input_ : output_).get(), text)) {
        throwErrno("write");
    }
}

void RunningProgram::endInput() {
    input_ = FileDescriptor();
}

void RunningProgram::closeOutput() {
    output_ = FileDescriptor();
}

void RunningProgram::sendSignal(int signal) const {
    ::kill(pid_, signal);
}

bool RunningProgram::readSome() {
    std::array<pollfd, 2> waited{{{output_.get(), POLLIN, 0}, {errors_.get(), POLLIN, 0}}};
    if (::poll(waited.data(), waited.size(),
               static_cast<int>(std::chrono::milliseconds(timeLimit).count())) <= 0) {
        return false;
    }
    std::array<char, 4096> buffer{};
    bool open = false;
    for (const pollfd& each : waited) {
        if (each.fd < 0 || each.revents == 0) {
            open = open || each.fd >= 0;
            continue;
        }
        const ssize_t count = ::read(each.fd, buffer.data(), buffer.size());
        if (count > 0) {
            open = true;
            (each.fd == output_.get() ? out_ : err_).append(buffer.data(), static_cast<std::size_t>(count));
        } else {  // a terminal that nobody holds any more answers with an error
            (each.fd == output_.get() ? output_ : errors_) = FileDescriptor();
        }
    }
    return open || isOpen();
}

bool RunningProgram::waitFor(const std::string& text) {
    for (;;) {
        const std::size_t found = out_.find(text, seen_);
        if (found != std::string::npos) {
            seen_ = found + text.size();
            return true;
        }
        if (!output_.isOpen() || !readSome()) {
            return false;
        }
    }
}

std::string RunningProgram::readLine() {
    const std::size_t begin = seen_;
    const std::size_t end = waitFor("\n") ? seen_ - 1 : out_.size();
    return out_.substr(begin, end - begin);
}

Ending RunningProgram::wait() {
    endInput();
    while (isOpen()) {
        if (!readSome() && isOpen()) {
            ::kill(pid_, SIGKILL);  // it neither says anything nor ends
            break;
        }
    }
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? Ending{WEXITSTATUS(status), 0} : Ending{-1, WTERMSIG(status)};
}

bool RunningProgram::waitForStop() const {
    int status = 0;
    return ::waitpid(pid_, &status, WUNTRACED) == pid_ && WIFSTOPPED(status);
}

std::string RunningProgram::told(const std::string& name) const {
    std::ifstream file("/proc/" + std::to_string(pid_) + '/' + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool RunningProgram::echoes() const {
    termios settings{};
    ::tcgetattr(output_.get(), &settings);
    return (settings.c_lflag & ECHO) != 0;
}

std::string screenOf(const std::string& output) {
    const std::string overwrite = "\r\x1b[K";
    std::string screen;
    for (std::size_t i = 0; i < output.size(); ++i) {
        if (output.compare(i, overwrite.size(), overwrite) == 0) {
            screen.erase(screen.rfind('\n') == std::string::npos ? 0 : screen.rfind('\n') + 1);
            i += overwrite.size() - 1;
        } else if (output[i] != '\r') {
            screen += output[i];
        }
    }
    return screen;
}

}  // namespace kaz::test
