#include "simulator/supplicant/bss_table.h"

#include <algorithm>

namespace kaz::sim {

void BssTable::update(const Neighbourhood& neighbourhood, const std::set<std::string>& askedFor,
                      std::chrono::milliseconds now, const Bss* kept) {
    constexpr unsigned patience = 2;
    for (const auto& entry : entries_) {
        ++entry->scansMissed;
    }
    for (const AccessPoint& accessPoint : neighbourhood.accessPoints) {
        hear(accessPoint, accessPoint.hidden ? std::string() : accessPoint.ssid, now);
        if (accessPoint.hidden && askedFor.contains(accessPoint.ssid)) {
            hear(accessPoint, accessPoint.ssid, now);
        }
    }
    forgetIf([&](const Bss& bss) { return bss.scansMissed >= patience && &bss != kept; });
}

void BssTable::flush(std::chrono::milliseconds age, std::chrono::milliseconds now, const Bss* kept) {
    forgetIf([&](const Bss& bss) { return now - bss.lastSeen >= age && &bss != kept; });
}

const Bss* BssTable::find(unsigned id) const {
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [id](const auto& b) { return b->id == id; });
    return found == entries_.end() ? nullptr : found->get();
}

void BssTable::hear(const AccessPoint& accessPoint, const std::string& ssid, std::chrono::milliseconds now) {
    const auto known = std::find_if(entries_.begin(), entries_.end(), [&](const auto& b) {
        return b->seen.bssid == accessPoint.bssid && b->ssid == ssid;
    });
    if (known == entries_.end()) {
        const Bss fresh{.id = nextId_++, .seen = accessPoint, .ssid = ssid, .lastSeen = now};
        events_.added(*entries_.emplace_back(std::make_unique<Bss>(fresh)));
        return;
    }
    Bss& bss = **known;
    const bool changed = bss.seen != accessPoint;
    bss.seen = accessPoint;
    bss.lastSeen = now;
    bss.scansMissed = 0;
    if (changed) {
        events_.changed(bss);
    }
}

template <typename Condition>
void BssTable::forgetIf(Condition condition) {
    const auto gone = std::stable_partition(entries_.begin(), entries_.end(),
                                            [&](const auto& entry) { return !condition(*entry); });
    std::vector<unsigned> ids;
    std::transform(gone, entries_.end(), std::back_inserter(ids),
                   [](const auto& entry) { return entry->id; });
    entries_.erase(gone, entries_.end());
    std::for_each(ids.begin(), ids.end(), events_.removed);
}

}  // namespace kaz::sim
