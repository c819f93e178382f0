#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace kaz {

// A program to run as a child process.
struct Program {
    std::vector<std::string> command;                                    // its name is searched for in $PATH
    std::optional<std::vector<std::string>> environment = std::nullopt;  // "NAME=value" each; nullopt: ours
    int output = -1;          // a descriptor; -1: our standard output
    int error = -1;           // a descriptor; -1: our standard error
    int inherited = -1;       // one more descriptor for the program
    int deathSignal = 0;      // sent when the calling thread ends
    bool newSession = false;  // Ctrl-C at our terminal does not reach it
};

// Starts the program with no signal blocked. If the child process cannot execute it, the child exits with status 127.
// Throws std::system_error if no child process can be started.
pid_t startProgram(const Program& program);

// The status that a shell shows for a wait status: the exit status, or 128 plus the number of the signal.
int exitStatus(int waitStatus);

}  // namespace kaz
