// Compiles the example of docs/integration.md.
#include <wifi/client/follower.h>

#include <vector>

void show(const kaz::wifi::ConnectionInfo& connection, const std::vector<kaz::wifi::WifiNetwork>& networks,
          bool scanning, bool enabled);
void integrationSnippet();

void integrationSnippet() {
#include "integration.inc"
}
