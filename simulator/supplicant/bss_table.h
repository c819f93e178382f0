#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "simulator/world/neighbourhood.h"

namespace kaz::sim {

// What scans have shown of one access point.
struct Bss {
    unsigned id = 0;
    AccessPoint seen;  // as of the last scan that met it
    std::string ssid;  // what it told: nothing as long as nobody asked a hidden one
    std::chrono::milliseconds lastSeen{0};
    unsigned scansMissed = 0;
};

// The BSSs found, in the order they were found. Ids are never used twice.
class BssTable {
  public:
    struct Events {
        std::function<void(const Bss&)> added;
        std::function<void(const Bss&)> changed;
        std::function<void(unsigned id)> removed;
    };

    explicit BssTable(Events events) : events_(std::move(events)) {}

    // Takes in what a scan hears. A hidden access point tells its SSID when it is among those asked for. A
    // BSS that two scans in a row have missed is forgotten, unless it is `kept`.
    void update(const Neighbourhood& neighbourhood, const std::set<std::string>& askedFor,
                std::chrono::milliseconds now, const Bss* kept);

    // Forgets what was last seen longer ago than `age`; everything but `kept` for zero.
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
