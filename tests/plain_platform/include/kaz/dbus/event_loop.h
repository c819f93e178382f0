#pragma once

#include <kaz/dbus/message.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace kaz::dbus {

// The operations that every device's event loop has. It opens the bus once, does not check who sends a signal, has no
// bound for its tasks, and does not catch exceptions. At the end it waits for a call in flight.
class EventLoop {
  public:
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    EventLoop(EventLoop&&) = delete;
    EventLoop& operator=(EventLoop&&) = delete;

    void startEventLoopAsync();
    void stopEventLoopAsync();
    void pushTaskAsync(std::function<void()> task);
    void setIdleTaskSync(std::function<std::optional<std::chrono::milliseconds>()> task);
    void configureTimerSync(bool enable, std::chrono::milliseconds period);
    void setTimerCompletedTask(std::function<void()> task);
    void registerSignalHandlerSync(const char* sender, const char* path, const char* interface,
                                   const char* member, bool temporary,
                                   std::function<void(MessageDecoder&)> handler);
    void removeTemporarySignalHandlersSync();
    sd_bus* getSdBusHandle();

  private:
    struct Loop;
    std::unique_ptr<Loop> loop_;
};

}  // namespace kaz::dbus
