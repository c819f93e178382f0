#include "platform/metrics/exposition/text_format.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <set>
#include <string_view>

namespace kaz::metrics_reporting {
namespace {

// <cctype> depends on the locale.
bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

bool mayBeInName(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || isDigit(byte) || byte == '_' ||
           byte == ':';
}

std::string toMetricName(std::string_view name) {
    std::string result;
    if (name.empty() || isDigit(name.front())) {
        result += '_';
    }
    for (const char byte : name) {
        result += mayBeInName(byte) ? byte : '_';
    }
    return result;
}

std::string counterOf(const std::string& gauge) {
    return gauge + "_reports_total";
}

// Reserves the name for a gauge and its counter, with a number appended if necessary.
std::string reserve(std::set<std::string>& taken, const std::string& wanted) {
    std::string name = wanted;
    for (int number = 2; taken.contains(name) || taken.contains(counterOf(name)); ++number) {
        name = fmt::format("{}_{}", wanted, number);
    }
    taken.insert(name);
    taken.insert(counterOf(name));
    return name;
}

std::string escapedHelp(std::string_view text) {
    std::string result;
    for (const char byte : text) {
        if (byte == '\n') {
            result += "\\n";
        } else if (byte == '\\') {
            result += "\\\\";
        } else {
            // The page must be UTF-8.
            result += byte >= ' ' && byte <= '~' ? byte : '?';
        }
    }
    return result;
}

std::string toText(double value) {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0 ? "+Inf" : "-Inf";
    }
    return fmt::format("{}", value);
}

}  // namespace

std::string toPrometheusText(const std::vector<Sample>& samples) {
    std::string page;
    std::set<std::string> taken;
    for (const Sample& sample : samples) {
        const std::string gauge = reserve(taken, toMetricName(sample.name));
        const std::string help = escapedHelp(sample.name);
        if (sample.reports > 0) {
            fmt::format_to(std::back_inserter(page),
                           "# HELP {0} Last value reported to {1}.\n# TYPE {0} gauge\n{0} {2}\n", gauge, help,
                           toText(sample.value));
        }
        fmt::format_to(std::back_inserter(page),
                       "# HELP {0} Number of reports to {1}.\n# TYPE {0} counter\n{0} {2}\n",
                       counterOf(gauge), help, sample.reports);
    }
    return page;
}

}  // namespace kaz::metrics_reporting
