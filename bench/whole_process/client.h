// Shared by the clients that another process measures.
#pragma once

namespace kaz::bench {

// The private memory that this process has written to, in kB.
long privateKilobytes();

// Prints "ready" and the former amount of this memory.
void reportReady(long before);

}  // namespace kaz::bench
