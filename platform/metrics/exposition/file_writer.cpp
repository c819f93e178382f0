#include "platform/metrics/exposition/file_writer.h"

#include <pthread.h>
#include <signal.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <exception>
#include <utility>

#include "platform/metrics/exposition/text_file.h"

namespace kaz::metrics_reporting {
namespace {

void warn(const std::filesystem::path& file, const char* reason) noexcept {
    try {
        // The host may have shut its logging down.
        if (const auto logger = spdlog::default_logger()) {
            logger->warn("Couldn't write metrics to {}: {}", file.native(), reason);
        }
    } catch (...) {
        // There is nobody left to tell.
    }
}

// Signals are the host's business: a thread started meanwhile gets none. Faults are not blocked, they belong to
// the thread that makes them.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        ::sigset_t blocked;
        ::sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) {
            ::sigdelset(&blocked, fault);
        }
        ::pthread_sigmask(SIG_SETMASK, &blocked, &former_);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    SignalsBlocked(SignalsBlocked&&) = delete;
    SignalsBlocked& operator=(SignalsBlocked&&) = delete;

  private:
    ::sigset_t former_{};
};

}  // namespace

FileWriter::FileWriter(std::filesystem::path file, std::chrono::steady_clock::duration interval,
                       Render render)
    : file_(std::move(file)), interval_(interval), render_(std::move(render)) {}

FileWriter::~FileWriter() {
    close();
}

void FileWriter::noteChange() noexcept {
    // Always an exchange, never a mere look: it orders this change before the writer's reading of it.
    const bool isFirst = !changed_.exchange(true);
    if (process_ == 0) {
        start();
    }
    if (isFirst) {
        wakeUp_.post();
    }
}

void FileWriter::close() noexcept {
    if (isInherited()) {
        return;  // before locking: nobody would ever unlock what the parent had locked
    }
    const std::lock_guard lock(threadMutex_);
    if (closing_.exchange(true)) {
        return;
    }
    wakeUp_.post();
    if (thread_.joinable()) {
        thread_.join();
    }
    if (changed_) {
        write();
    }
}

void FileWriter::start() noexcept {
    const std::lock_guard lock(threadMutex_);
    if (closing_ || process_ != 0) {
        return;
    }
    try {
        const SignalsBlocked blocked;
        thread_ = std::thread([this] { run(); });
        process_ = ::getpid();
    } catch (const std::exception& error) {
        if (!std::exchange(startFailedBefore_, true)) {
            warn(file_, error.what());
        }
    }
}

void FileWriter::run() {
    ::pthread_setname_np(::pthread_self(), "kaz-metrics");
    auto earliest = std::chrono::steady_clock::now();
    for (;;) {
        wakeUp_.wait();
        // A change that was noted is noted once, so that only close() can cut this wait short.
        while (!closing_ && wakeUp_.waitUntil(earliest)) {
        }
        if (closing_) {
            return;
        }
        write();
        earliest = std::chrono::steady_clock::now() + interval_;
    }
}

void FileWriter::write() noexcept {
    changed_.exchange(false);
    try {
        replaceTextFile(file_, render_());
        failedBefore_ = false;
    } catch (const std::exception& error) {
        if (!std::exchange(failedBefore_, true)) {
            warn(file_, error.what());
        }
    }
}

bool FileWriter::isInherited() const noexcept {
    return process_ != 0 && process_ != ::getpid();
}

}  // namespace kaz::metrics_reporting
