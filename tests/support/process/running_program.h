#pragma once

#include "base/file_descriptor.h"
#include "base/non_copyable.h"
#include "support/process/memory.h"

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kaz::test {

// How a program ended.
struct Ending {
    int status = -1;  // exit status, or -1
    int signal = 0;   // the signal that ended it, or 0
};

using Environment = std::map<std::string, std::string>;

// A program in another process, with pipes or its own terminal as standard input and output. The destructor
// kills it.
class RunningProgram : NonCopyable {
  public:
    struct Terminal {
        unsigned short columns = 80;
        unsigned short rows = 24;
    };

    // With pipes. `environment` is added to this process's environment; an empty value removes a variable.
    explicit RunningProgram(const std::vector<std::string>& command, const Environment& environment = {});
    // With a terminal, which also shows stderr.
    RunningProgram(const std::vector<std::string>& command, const Environment& environment,
                   Terminal terminal);
    ~RunningProgram();

    // Types into the terminal, or writes to the pipe.
    void send(const std::string& text) const;
    // Closes the pipe to the standard input.
    void endInput();
    // Closes the pipe from the standard output, as a reader does that has seen enough.
    void closeOutput();
    void sendSignal(int signal) const;

    // Reads output until `text` appears after the text of the last call. Returns false if the program ended
    // before, or wrote nothing within the time limit.
    bool waitFor(const std::string& text);

    // The rest of the line, without the line ending.
    std::string readLine();

    // Waits for the end. Kills the program after the time limit without output. Then out() and err() have its
    // output.
    Ending wait();
    // Waits until it is stopped, for example by Ctrl-Z.
    bool waitForStop() const;

    const std::string& out() const { return out_; }
    const std::string& err() const { return err_; }

    // The content of /proc/PID/NAME while the process runs.
    std::string told(const std::string& name) const;

    // Where in the memory of the process the secret lies (support/process/memory.h).
    std::vector<std::string> places(const std::string& secret) const { return placesInMemory(pid_, secret); }

    // Whether the terminal echoes input.
    bool echoes() const;

  private:
    bool readSome();
    // Whether the program may still write.
    bool isOpen() const { return output_.isOpen() || errors_.isOpen(); }

    pid_t pid_ = -1;
    FileDescriptor input_;
    FileDescriptor output_;
    FileDescriptor errors_;
    std::string out_;
    std::string err_;
    std::size_t seen_ = 0;
};

// The content of the screen after `output`, for programs that only overwrite their current line.
std::string screenOf(const std::string& output);

}  // namespace kaz::test
