#pragma once

#include <chrono>
#include <string>

namespace kaz::requests {

// What became of a request that changes the supplicant and saves it. The texts are those of the daemons.
struct Change {
    bool done = false;
    bool saved = false;
    std::string trouble;  // why it is not done, or not saved
};

// Sets the country of the interface that the supplicant uses first, two capital letters, and lets the supplicant save
// it. Returns after the limit when the supplicant does not answer.
Change setCountry(const std::string& country, std::chrono::milliseconds limit);

}  // namespace kaz::requests
