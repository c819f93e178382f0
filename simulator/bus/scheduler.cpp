#include "simulator/bus/scheduler.h"

#include <time.h>

#include <cstdint>
#include <exception>
#include <utility>

namespace kaz::sim {

int Timer::State::run(void* data) {
    auto* const state = static_cast<State*>(data);
    const auto due = std::exchange(state->task, nullptr);
    state->source.reset();
    try {
        due();  // may destroy the state
    } catch (const std::exception&) {
        return 0;  // a bus that has gone; whoever waits for the service notices
    }
    return 0;
}

Timer Scheduler::at(std::chrono::microseconds delay, std::function<void()> task) const {
    Timer timer(std::move(task));
    constexpr std::uint64_t accuracy = 1;  // 0 means a quarter of a second
    checked(sd_event_add_time_relative(
                event_, dbus::out(timer.state_->source), CLOCK_MONOTONIC,
                static_cast<std::uint64_t>(delay.count()), accuracy,
                [](sd_event_source*, std::uint64_t, void* data) { return Timer::State::run(data); },
                timer.state_.get()),
            "sd_event_add_time_relative");
    return timer;
}

Timer Scheduler::after(std::chrono::milliseconds delay, std::function<void()> task) const {
    const auto scaled = static_cast<double>(delay.count()) * 1000.0 * timeScale_;
    return at(std::chrono::microseconds(static_cast<std::int64_t>(scaled)), std::move(task));
}

Timer Scheduler::afterRealTime(std::chrono::milliseconds delay, std::function<void()> task) const {
    return at(delay, std::move(task));
}

Timer Scheduler::soon(std::function<void()> task) const {
    Timer timer(std::move(task));
    checked(sd_event_add_defer(
                event_, dbus::out(timer.state_->source),
                [](sd_event_source*, void* data) { return Timer::State::run(data); }, timer.state_.get()),
            "sd_event_add_defer");
    return timer;
}

std::chrono::milliseconds Scheduler::now() const {
    const auto real = std::chrono::steady_clock::now().time_since_epoch();
    const auto simulated = std::chrono::duration<double, std::milli>(real) / timeScale_;
    return std::chrono::duration_cast<std::chrono::milliseconds>(simulated);
}

}  // namespace kaz::sim
