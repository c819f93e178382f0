// Compiles the example of docs/simulator.md.
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "simulator/world/neighbourhood_json.h"

#include <gtest/gtest.h>

#include <string>

void simulatorSnippet(const std::string& file);

void simulatorSnippet(const std::string& file) {
#include "simulator.inc"
}
