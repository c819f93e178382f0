#include "vm/month_figures.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>

namespace kaz::vm {
namespace {

constexpr std::size_t week = 7;

struct Figure {
    const char* name;
    long DayFigures::*value;
    bool ofTheWholeDay;
    long mayGrow;  // at the end of a day: by so much; of the whole day: by so many percent
};

const std::array<Figure, 11> figures{{
    {"resident memory, kB", &DayFigures::residentKb, false, 256},
    {"allocated memory, bytes", &DayFigures::heapBytes, false, 16 * 1024},
    {"open descriptors", &DayFigures::descriptors, false, 0},
    {"threads", &DayFigures::threads, false, 0},
    {"wake-ups of the loop", &DayFigures::wakeUps, true, 10},
    {"messages sent", &DayFigures::messages, true, 10},
    {"log records", &DayFigures::logRecords, true, 10},
    {"log records, info and above", &DayFigures::logInfo, true, 10},
    {"writes of the supplicant's file", &DayFigures::supplicantWrites, true, 10},
    {"writes of the user's choice", &DayFigures::choiceWrites, true, 10},
    {"writes that changed nothing", &DayFigures::unchangedWrites, true, 10},
}};

std::vector<long> valuesOf(const Figure& figure, Days::const_iterator begin, Days::const_iterator end) {
    std::vector<long> values;
    std::transform(begin, end, std::back_inserter(values),
                   [&](const DayFigures& day) { return day.*figure.value; });
    return values;
}

// Of what is measured at the end of a day the greatest value, else the sum.
long weekly(const Figure& figure, Days::const_iterator begin, Days::const_iterator end) {
    long result = 0;
    for (const long value : valuesOf(figure, begin, end)) {
        result = figure.ofTheWholeDay ? result + value : std::max(result, value);
    }
    return result;
}

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::string firstLine(const std::string& path) {
    std::ifstream file(path);
    std::string text;
    std::getline(file, text);
    return text;
}

// How often the thread stopped to wait.
long wakeUpsOf(pid_t thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    for (std::string key; status >> key;) {
        if (long count = 0; key == "voluntary_ctxt_switches:" && status >> count) {
            return count;
        }
    }
    return 0;
}

}  // namespace

pid_t loopThread() {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        if (firstLine(task.path() / "comm") == "kazdbus") {
            return std::stoi(task.path().filename());
        }
    }
    return 0;
}

DayFigures usageNow() {
    DayFigures now;
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> now.residentKb;
    now.residentKb *= ::sysconf(_SC_PAGESIZE) / 1024;
    const struct mallinfo2 info = ::mallinfo2();
    now.heapBytes = static_cast<long>(info.uordblks + info.hblkhd);
    now.descriptors = static_cast<long>(entriesOf("/proc/self/fd"));
    now.threads = static_cast<long>(entriesOf("/proc/self/task"));
    now.wakeUps = wakeUpsOf(loopThread());
    return now;
}

std::string tableOfDays(const Days& days) {
    std::ostringstream out;
    out << std::left << std::setw(34) << "of each day" << std::right;
    for (const char* column : {"first", "median", "last", "maximum"}) {
        out << std::setw(10) << column;
    }
    out << '\n';
    for (const Figure& figure : figures) {
        std::vector<long> values = valuesOf(figure, days.begin(), days.end());
        const long first = values.front();
        const long last = values.back();
        std::sort(values.begin(), values.end());
        out << std::left << std::setw(34) << figure.name << std::right << std::setw(10) << first
            << std::setw(10) << values[values.size() / 2] << std::setw(10) << last << std::setw(10)
            << values.back() << '\n';
    }
    return out.str();
}

std::string lineOfDay(std::size_t number, const DayFigures& day) {
    std::ostringstream out;
    out << "day " << number;
    for (const Figure& figure : figures) {
        out << "; " << figure.name << ": " << day.*figure.value;
    }
    out << '\n';
    return out.str();
}

std::string tableOfCauses(const std::map<std::string, long>& causes,
                          const std::map<std::string, FileWrites::Count>& writes) {
    std::ostringstream out;
    const auto row = [&out](const std::string& cause, const auto&... numbers) {
        out << std::left << std::setw(42) << cause << std::right;
        ((out << std::setw(12) << numbers), ...);
        out << '\n';
    };
    row("cause of writes", "times", "supplicant", "choice", "unchanged");
    for (const auto& [cause, times] : causes) {
        const auto found = writes.find(cause);
        const FileWrites::Count count = found == writes.end() ? FileWrites::Count() : found->second;
        row(cause, times, count.supplicant, count.choice, count.unchanged);
    }
    return out.str();
}

std::string growth(const Days& days) {
    const bool wholeWeeks = days.size() >= 2 * week;
    const auto compared = static_cast<Days::difference_type>(wholeWeeks ? week : days.size() / 2);
    std::ostringstream out;
    for (const Figure& figure : figures) {
        if (!wholeWeeks && figure.mayGrow > 0) {
            continue;
        }
        const long before = weekly(figure, days.begin(), days.begin() + compared);
        const long after = weekly(figure, days.end() - compared, days.end());
        const long limit = before + (figure.ofTheWholeDay ? before * figure.mayGrow / 100 : figure.mayGrow);
        if (compared > 0 && after > limit) {
            out << figure.name << " grew from " << before << " to " << after << '\n';
        }
    }
    return out.str();
}

}  // namespace kaz::vm
