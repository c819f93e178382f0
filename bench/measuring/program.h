#pragma once

namespace kaz::bench {

// What main() of a benchmark does: runs it, in the short form when --short is asked for. Returns the exit status; what
// keeps it from running goes to stderr under the program's name.
int runProgram(int argc, char** argv, void (*benchmark)(bool brief));

}  // namespace kaz::bench
