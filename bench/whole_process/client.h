// What the clients have in common that are looked at from outside.
#pragma once

namespace kaz::bench {

// Memory of this process that no other shares, kB.
long privateKilobytes();

// Prints "ready" and by how much that memory has grown since it was `before`.
void reportReady(long before);

}  // namespace kaz::bench
