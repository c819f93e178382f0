#include "bench/signals/receivers.h"

#include "bench/codec/hand_written_codec.h"
#include "bench/stand_in/stand_in_process.h"
#include "dbus/message_io.h"
#include "dbus/records.h"

#include <kaz/dbus/event_loop.h>

#include <future>
#include <thread>

namespace kaz::bench {
namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* propertiesChanged = "PropertiesChanged";

void note(Reception& reception, std::chrono::steady_clock::time_point at, bool good) {
    if (good) {
        reception.at = at;
        ++reception.count;
        reception.count.notify_one();
    }
}

class OurReceiver final : public Receiver {
  public:
    explicit OurReceiver(const std::string& path) {
        loop_.registerSignalHandlerSync(senderName, path.c_str(), propertiesInterface, propertiesChanged,
                                        false, [this](dbus::MessageDecoder& decoder) {
                                            const auto at = std::chrono::steady_clock::now();
                                            const auto interface = dbus::read<std::string>(decoder);
                                            const auto properties =
                                                dbus::read<dbus::SupplicantInterfaceProperties>(decoder);
                                            note(reception, at, properties && properties->state);
                                        });
        const auto running = std::make_shared<std::promise<void>>();
        loop_.pushTaskAsync([running] { running->set_value(); });
        loop_.startEventLoopAsync();
        running->get_future().wait();
    }

  private:
    dbus::EventLoop loop_;
};

class BareReceiver final : public Receiver {
  public:
    BareReceiver(const std::string& busAddress, const std::string& path)
        : bus_(connectTo(busAddress)), thread_([this, path] { serve(path.c_str()); }) {
        subscribed_.get_future().wait();
    }
    ~BareReceiver() override {
        ending_ = true;
        thread_.join();
    }
    BareReceiver(const BareReceiver&) = delete;
    BareReceiver& operator=(const BareReceiver&) = delete;
    BareReceiver(BareReceiver&&) = delete;
    BareReceiver& operator=(BareReceiver&&) = delete;

  private:
    static int onSignal(sd_bus_message* message, void* receiver, sd_bus_error* /*error*/) {
        const auto at = std::chrono::steady_clock::now();
        const char* interface = nullptr;
        dbus::SupplicantInterfaceProperties properties;
        const bool good = sd_bus_message_read_basic(message, 's', static_cast<void*>(&interface)) > 0 &&
                          readPropertiesChangedByHand(message, properties) >= 0;
        note(static_cast<BareReceiver*>(receiver)->reception, at, good && properties.state);
        return 0;
    }

    void serve(const char* path) {
        sd_bus_match_signal(bus_.get(), nullptr, senderName, path, propertiesInterface, propertiesChanged,
                            &BareReceiver::onSignal, this);
        subscribed_.set_value();
        constexpr std::uint64_t oftenEnoughToEnd = 100'000;  // us
        while (!ending_) {
            if (sd_bus_process(bus_.get(), nullptr) == 0) {
                sd_bus_wait(bus_.get(), oftenEnoughToEnd);
            }
        }
    }

    OpenBus bus_;
    std::promise<void> subscribed_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<Receiver> makeOurReceiver(const std::string& path) {
    return std::make_unique<OurReceiver>(path);
}

std::unique_ptr<Receiver> makeBareReceiver(const std::string& busAddress, const std::string& path) {
    return std::make_unique<BareReceiver>(busAddress, path);
}

}  // namespace kaz::bench
