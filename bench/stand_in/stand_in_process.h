#pragma once

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kaz::bench {

struct CloseBus {
    void operator()(sd_bus* bus) const noexcept { sd_bus_flush_close_unref(bus); }
};
using OpenBus = std::unique_ptr<sd_bus, CloseBus>;

// A connection to the bus at this address. Throws std::runtime_error.
OpenBus connectTo(const std::string& address);

// The services of the benchmarks, in a separate process that ends with this object. Throws std::runtime_error
// when the process does not start or a control call fails.
class StandInProcess {
  public:
    explicit StandInProcess(const std::string& busAddress);
    ~StandInProcess();
    StandInProcess(const StandInProcess&) = delete;
    StandInProcess& operator=(const StandInProcess&) = delete;
    StandInProcess(StandInProcess&&) = delete;
    StandInProcess& operator=(StandInProcess&&) = delete;

    void setBssCount(std::uint32_t count) { order("SetBssCount", "u", count); }
    void setSsidCount(std::uint32_t count) { order("SetSsidCount", "u", count); }
    void report(std::uint32_t bssCount) { order("Report", "u", bssCount); }
    void reportScans(std::uint32_t signals) { order("Scans", "u", signals); }
    void hang(bool hanging) { order("Hang", "b", hanging ? 1U : 0U); }

    // The object paths of the first `count` access points.
    static std::vector<std::string> bssPaths(std::size_t count);

  private:
    void order(const char* member, const char* type, std::uint32_t value);

    pid_t process_ = -1;
    OpenBus bus_;
};

}  // namespace kaz::bench
