// The example of docs/simulator.md compiles, in a test.
#include "neighbourhood_json.h"
#include "private_bus.h"
#include "simulated_device.h"

#include <gtest/gtest.h>

#include <string>

void simulatorSnippet(const std::string& file);

void simulatorSnippet(const std::string& file) {
#include "simulator.inc"
}
