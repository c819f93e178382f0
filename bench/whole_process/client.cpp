#include "client.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace kaz::bench {

long privateKilobytes() {
    std::ifstream file("/proc/self/smaps_rollup");
    std::string word;
    long sum = 0;
    while (file >> word) {
        if (word == "Private_Clean:" || word == "Private_Dirty:") {
            long kilobytes = 0;
            file >> kilobytes;
            sum += kilobytes;
        }
    }
    return sum;
}

void reportReady(long before) {
    std::printf("ready %ld\n", privateKilobytes() - before);
    std::fflush(stdout);
}

}  // namespace kaz::bench
