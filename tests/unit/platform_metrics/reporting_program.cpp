// Reports to gauges and ends in one of several ways, named by its argument. Exit status 0 is a success.
#include "base/non_copyable.h"

#include <kaz/metrics/metrics_reporter_factory.h>
#include <spdlog/spdlog.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace {

using kaz::metrics_reporting::Gauge;
using kaz::metrics_reporting::MetricsReporterFactory;

std::shared_ptr<Gauge> gauge(const std::string& name) {
    return MetricsReporterFactory().createGauge(name);
}

std::ptrdiff_t threadCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

// Created before main() and before the first gauge, and destroyed after almost everything else.
class LastReporter : kaz::NonCopyable {
  public:
    LastReporter() = default;
    ~LastReporter() {
        if (reporting_) {
            gauge("program.last")->set(3);
        }
    }

    void reportAtTheEnd() { reporting_ = true; }

  private:
    bool reporting_ = false;
};

LastReporter lastReporter;

int returnFromMain() {
    gauge("program.first")->set(1);
    gauge("program.second")->set(1);
    gauge("program.second")->set(2);
    gauge("program.silent");
    return 0;
}

int reportWhileStaticObjectsAreDestroyed() {
    lastReporter.reportAtTheEnd();
    return returnFromMain();
}

int reportOnlyWhileStaticObjectsAreDestroyed() {
    lastReporter.reportAtTheEnd();
    return 0;
}

int createOnly() {
    gauge("program.silent");
    return 0;
}

[[noreturn]] int exitWhileThreadsReport() {
    std::atomic<int> reported = 0;
    for (int number = 0; number < 3; ++number) {
        std::thread([&reported] {
            const auto first = gauge("program.first");
            for (;;) {
                first->set(1);
                ++reported;
            }
        }).detach();
    }
    while (reported < 1000) {
        std::this_thread::yield();
    }
    std::exit(0);
}

int leaveTheWorkingFolder() {
    gauge("program.first");
    std::filesystem::current_path("/");
    gauge("program.first")->set(1);
    return 0;
}

int startNoThread() {
    const auto before = threadCount();
    gauge("program.first")->set(1);
    return threadCount() == before ? 0 : 1;
}

int shutLoggingDown() {
    gauge("program.first")->set(1);
    spdlog::shutdown();
    return 0;
}

// A child that exits in the usual way, with the parent's gauges.
int forkAndExit() {
    gauge("program.first")->set(1);
    while (!std::filesystem::exists(std::getenv("KAZ_METRICS_FILE"))) {
        std::this_thread::yield();
    }
    const pid_t child = ::fork();
    if (child == 0) {
        gauge("program.first")->set(42);
        std::filesystem::remove(std::getenv("KAZ_METRICS_FILE"));
        std::exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    const bool childWroteNothing = !std::filesystem::exists(std::getenv("KAZ_METRICS_FILE"));
    gauge("program.first")->set(2);
    return status == 0 && childWroteNothing ? 0 : 1;
}

const std::map<std::string, std::function<int()>> ways{
    {"return from main", returnFromMain},
    {"report while static objects are destroyed", reportWhileStaticObjectsAreDestroyed},
    {"report only while static objects are destroyed", reportOnlyWhileStaticObjectsAreDestroyed},
    {"create only", createOnly},
    {"exit while threads report", exitWhileThreadsReport},
    {"leave the working folder", leaveTheWorkingFolder},
    {"start no thread", startNoThread},
    {"shut logging down", shutLoggingDown},
    {"fork and exit", forkAndExit},
};

}  // namespace

int main(int count, char** arguments) {
    return count == 2 && ways.contains(arguments[1]) ? ways.at(arguments[1])() : 2;
}
