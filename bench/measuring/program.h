#pragma once

namespace kaz::bench {

// The main() of a benchmark: runs it, in the short form with --short. Returns the exit status. Errors go to
// stderr, with the program's name.
int runProgram(int argc, char** argv, void (*benchmark)(bool brief));

}  // namespace kaz::bench
