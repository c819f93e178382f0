// Compiles the example of docs/integration.md.
#include <sys/eventfd.h>
#include <wifi/manager.h>

#include <vector>

void show(const kaz::wifi::ConnectionInfo& connection, const std::vector<kaz::wifi::WifiNetwork>& networks,
          bool scanning, bool enabled);
void integrationSnippet(kaz::wifi::Manager& wifi);

void integrationSnippet(kaz::wifi::Manager& wifi) {
#include "integration.inc"
}
