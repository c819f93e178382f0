#pragma once

namespace kaz::bench {

// What this process has in memory now, kB.
double residentKilobytes();

}  // namespace kaz::bench
