// The example of docs/integration.md compiles, in a loop that has something to show.
#include <sys/eventfd.h>
#include <wifi/manager.h>

#include <vector>

void show(const kaz::wifi::ConnectionInfo& connection, const std::vector<kaz::wifi::WifiNetwork>& networks,
          bool scanning, bool enabled);
void integrationSnippet(kaz::wifi::Manager& wifi);

void integrationSnippet(kaz::wifi::Manager& wifi) {
#include "integration.inc"
}
