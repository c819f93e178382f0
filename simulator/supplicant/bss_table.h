#pragma once

#include "simulator/world/neighbourhood.h"

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kaz::sim {

// What scans found about one access point.
struct Bss {
    unsigned id = 0;
    AccessPoint seen;  // as of the last scan that found it
    std::string ssid;  // as announced: empty for a hidden access point until a scan probed for it
    std::chrono::milliseconds lastSeen{0};
    unsigned scansMissed = 0;
};

// The BSSs in the order in which they were found. Ids are never reused.
class BssTable {
  public:
    struct Events {
        std::function<void(const Bss&)> added;
        std::function<void(const Bss&)> changed;
        std::function<void(unsigned id)> removed;
    };

    explicit BssTable(Events events) : events_(std::move(events)) {}

    // Adds the results of a scan. A hidden access point answers if the scan probed for its SSID. A BSS that
    // two scans in a row missed is removed, unless it is `kept`.
    void update(const Neighbourhood& neighbourhood, const std::set<std::string>& askedFor,
                std::chrono::milliseconds now, const Bss* kept);

    // Removes BSSs that were last seen longer than `age` ago; with zero, all but `kept`.
    void flush(std::chrono::milliseconds age, std::chrono::milliseconds now, const Bss* kept);

    const Bss* find(unsigned id) const;
    const std::vector<std::unique_ptr<Bss>>& all() const noexcept { return entries_; }

  private:
    void hear(const AccessPoint& accessPoint, const std::string& ssid, std::chrono::milliseconds now);
    template <typename Condition>
    void forgetIf(Condition condition);

    Events events_;
    std::vector<std::unique_ptr<Bss>> entries_;
    unsigned nextId_ = 0;
};

}  // namespace kaz::sim
