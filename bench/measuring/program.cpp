#include "bench/measuring/program.h"

#include <errno.h>

#include <exception>
#include <iostream>
#include <string_view>

namespace kaz::bench {

int runProgram(int argc, char** argv, void (*benchmark)(bool brief)) {
    try {
        benchmark(argc > 1 && std::string_view(argv[1]) == "--short");
        return 0;
    } catch (const std::exception& error) {
        std::cerr << ::program_invocation_short_name << ": " << error.what() << '\n';
        return 1;
    }
}

}  // namespace kaz::bench
