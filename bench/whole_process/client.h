// What the clients have in common that are looked at from outside.
#pragma once

namespace kaz::bench {

// Memory that this process has written to and no other shares, kB.
long privateKilobytes();

// Prints "ready" and how much that memory was before.
void reportReady(long before);

}  // namespace kaz::bench
