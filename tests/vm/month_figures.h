// What a day costs a device, and whether the days of a month cost more and more.
#pragma once

#include "vm/file_writes.h"

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace kaz::vm {

struct DayFigures {
    // At the end of the day.
    long residentKb = 0;
    long heapBytes = 0;
    long descriptors = 0;
    long threads = 0;
    // During the day.
    long wakeUps = 0;     // of the loop thread
    long messages = 0;    // that the Manager sent on the bus
    long logRecords = 0;  // of all levels
    long logInfo = 0;     // of level info and above
    long supplicantWrites = 0;
    long choiceWrites = 0;
    long unchangedWrites = 0;
};

// The thread of the Manager's event loop.
pid_t loopThread();

// The figures of this process now, with the wake-ups since the thread started.
DayFigures usageNow();

using Days = std::vector<DayFigures>;

// One line per figure with its first, median, last and greatest value.
std::string tableOfDays(const Days& days);

// One line with all figures of a day.
std::string lineOfDay(std::size_t number, const DayFigures& day);

// One line per cause: how often it happened and what was written then.
std::string tableOfCauses(const std::map<std::string, long>& causes,
                          const std::map<std::string, FileWrites::Count>& writes);

// What grew, one line each, or nothing. Compares the last week with the first, because both have the same events. Of
// fewer than 14 days it compares the last half with the first, and only what must not grow at all.
std::string growth(const Days& days);

}  // namespace kaz::vm
