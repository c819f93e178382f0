#pragma once

#include "simulator/bus/handles.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace kaz::sim {

// A function that will run later. The destructor cancels it.
class Timer {
  public:
    Timer() = default;

    bool pending() const noexcept { return state_ != nullptr && state_->source != nullptr; }
    void cancel() noexcept { state_.reset(); }

  private:
    friend class Scheduler;

    struct State {
        EventSource source;
        std::function<void()> task;

        static int run(void* data);
    };

    explicit Timer(std::function<void()> task)
        : state_(std::make_unique<State>(State{.source = nullptr, .task = std::move(task)})) {}

    std::unique_ptr<State> state_;
};

// Simulated time: every delay is multiplied by one factor. For the loop thread only.
class Scheduler {
  public:
    Scheduler(sd_event* event, double timeScale) : event_(event), timeScale_(timeScale) {}

    // The task may replace or cancel its own timer. Its exceptions are ignored.
    [[nodiscard]] Timer after(std::chrono::milliseconds delay, std::function<void()> task) const;

    // In real milliseconds, without the scale.
    [[nodiscard]] Timer afterRealTime(std::chrono::milliseconds delay, std::function<void()> task) const;

    // Runs the task when everything that is ready now was handled.
    [[nodiscard]] Timer soon(std::function<void()> task) const;

    // Milliseconds of simulated time since an unspecified moment.
    std::chrono::milliseconds now() const;

    sd_event* event() const noexcept { return event_; }

  private:
    [[nodiscard]] Timer at(std::chrono::microseconds delay, std::function<void()> task) const;

    sd_event* event_;
    double timeScale_;
};

}  // namespace kaz::sim
