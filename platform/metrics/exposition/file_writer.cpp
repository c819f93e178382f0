#include "platform/metrics/exposition/file_writer.h"

#include <pthread.h>
#include <unistd.h>

#include <exception>
#include <utility>

#include "base/log.h"
#include "base/signals_blocked.h"
#include "platform/metrics/exposition/text_file.h"

namespace kaz::metrics_reporting {
namespace {

void warn(const std::filesystem::path& file, const char* reason) noexcept {
    log::warn("Couldn't write metrics to {}: {}", file.native(), reason);
}

}  // namespace

FileWriter::FileWriter(std::filesystem::path file, std::chrono::steady_clock::duration interval,
                       Render render)
    : file_(std::move(file)), interval_(interval), render_(std::move(render)) {}

FileWriter::~FileWriter() {
    close();
}

void FileWriter::noteChange() noexcept {
    // Always exchange, never only load: this orders the change before the writer's read.
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
        return;  // before locking: a mutex that the parent had locked is never unlocked here
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
        // A change posts only once, so only close() can end this wait early.
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
