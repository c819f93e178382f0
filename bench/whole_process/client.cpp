#include "bench/whole_process/client.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace kaz::bench {

long privateKilobytes() {
    std::ifstream file("/proc/self/smaps_rollup");
    std::string word;
    long kilobytes = 0;
    while (file >> word && word != "Private_Dirty:") {
    }
    file >> kilobytes;
    return kilobytes;
}

void reportReady(long before) {
    std::printf("ready %ld\n", before);
    std::fflush(stdout);
}

}  // namespace kaz::bench
