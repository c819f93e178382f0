#pragma once

#include <string>

namespace kaz::requests {

// What became of a request that changes the supplicant. The texts are those of the daemons.
struct Change {
    bool done = false;
    bool saved = false;
    std::string trouble;  // why it is not done, or not saved
};

}  // namespace kaz::requests
