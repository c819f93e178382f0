#include "bench/measuring/resident_memory.h"

#include <unistd.h>

#include <fstream>

namespace kaz::bench {

double residentKilobytes() {
    std::ifstream file("/proc/self/statm");
    long all = 0;
    long resident = 0;
    file >> all >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1024;
}

}  // namespace kaz::bench
