#pragma once

#include "base/non_copyable.h"

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kaz::test {

// How a program came to its end.
struct Ending {
    int status = -1;  // exit status, or -1
    int signal = 0;   // the signal that ended it, or 0
};

using Environment = std::map<std::string, std::string>;

// A program that runs beside this one, with pipes or with a terminal of its own as standard input and output.
// Killed at the end of scope at the latest.
class RunningProgram : NonCopyable {
  public:
    struct Terminal {
        unsigned short columns = 80;
        unsigned short rows = 24;
    };

    // With pipes. `environment` is added to this process's; an empty value removes a variable.
    explicit RunningProgram(const std::vector<std::string>& command, const Environment& environment = {});
    // With a terminal. What the program writes to stderr arrives there, too.
    RunningProgram(const std::vector<std::string>& command, const Environment& environment,
                   Terminal terminal);
    ~RunningProgram();

    // Types at the terminal, or writes to the pipe.
    void send(const std::string& text) const;
    // Closes the pipe to the standard input.
    void endInput();
    void sendSignal(int signal) const;

    // Reads until the output holds `text`, from where the last call found its own. False when the program
    // ended before, or nothing came within the time limit.
    bool waitFor(const std::string& text);

    // The rest of the line, without its end.
    std::string readLine();

    // Waits for the end, and brings it about after the time limit without any output. What was written until
    // then is in out() and err().
    Ending wait();
    // Waits until it has been stopped, as by Ctrl-Z.
    bool waitForStop() const;

    const std::string& out() const { return out_; }
    const std::string& err() const { return err_; }

    // What the kernel tells everybody of the process while it runs: /proc/PID/NAME.
    std::string told(const std::string& name) const;

    // Whether the terminal shows what is typed.
    bool echoes() const;

  private:
    bool readSome();

    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    int errors_ = -1;
    std::string out_;
    std::string err_;
    std::size_t seen_ = 0;
};

// What is on the screen after a terminal has shown `output`, for programs that do no more than overwrite the
// line they are on.
std::string screenOf(const std::string& output);

}  // namespace kaz::test
