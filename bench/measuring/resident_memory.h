#pragma once

namespace kaz::bench {

// The resident memory of this process, in kB.
double residentKilobytes();

}  // namespace kaz::bench
