#pragma once

#include "communicator/communicator.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kaz::bench {

// One way of reading access points from the bus, one call each, into the library's records.
class BssReader {
  public:
    using Bss = wifi::Communicator::BssProperties;

    BssReader() = default;
    virtual ~BssReader() = default;
    BssReader(const BssReader&) = delete;
    BssReader& operator=(const BssReader&) = delete;
    BssReader(BssReader&&) = delete;
    BssReader& operator=(BssReader&&) = delete;

    // Throws when an access point cannot be read.
    virtual std::vector<Bss> read(const std::vector<std::string>& paths) = 0;

    // Runs the work on the thread that calls read(), and waits for it.
    virtual void onItsThread(const std::function<void()>& work) { work(); }
};

std::unique_ptr<BssReader> makeOurReader();
std::unique_ptr<BssReader> makeHandWrittenReader(const std::string& busAddress);
// By hand too, but with several calls in flight.
std::unique_ptr<BssReader> makePipelinedReader(const std::string& busAddress);
std::unique_ptr<BssReader> makeSdbusCppReader(const std::string& busAddress);
std::unique_ptr<BssReader> makeGDBusReader(const std::string& busAddress);
std::unique_ptr<BssReader> makeQtDBusReader(const std::string& busAddress);

inline constexpr const char* supplicantService = "fi.w1.wpa_supplicant1";
inline constexpr const char* bssInterface = "fi.w1.wpa_supplicant1.BSS";
inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

}  // namespace kaz::bench
