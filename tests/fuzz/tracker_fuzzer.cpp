// The connection tracker under any sequence of events: after each event it agrees with a model of its rules, and
// keeps the promises that hold whatever happens.
#include "connection_info/connection_info_helper.h"
#include "doubles/fake_clock/fake_clock.h"
#include "fuzz/kept_log.h"
#include "fuzz/require.h"
#include "fuzz/tracker_promises.h"
#include "support/tracker_model/tracker_event.h"
#include "support/tracker_model/tracker_model.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace kaz::fuzz {
namespace {

using Kind = TrackerEvent::Kind;

std::chrono::nanoseconds makeDuration(FuzzedDataProvider& bytes) {
    static constexpr std::array<std::int64_t, 8> usual{
        0, 1, 999'999, 1'000'000, 1'000'000'000, 1'999'000'000, 1'999'000'001, 2'000'000'000};
    const auto pick = bytes.ConsumeIntegralInRange<std::size_t>(0, usual.size());
    return std::chrono::nanoseconds(
        pick < usual.size() ? usual.at(pick) : bytes.ConsumeIntegralInRange<std::int64_t>(0, 3'000'000'000));
}

TrackerEvent makeEvent(FuzzedDataProvider& bytes) {
    static const std::array<std::string, 4> ssids{"Home", "Cafe", std::string("a\0\"\\\xff", 5), ""};
    TrackerEvent event;
    event.kind = bytes.ConsumeEnum<Kind>();
    switch (event.kind) {
        case Kind::connect:
        case Kind::forget:
        case Kind::select:
            event.ssid = ssids.at(bytes.ConsumeIntegralInRange<std::size_t>(0, 3));
            break;
        case Kind::bss:
            event.ssid = ssids.at(bytes.ConsumeIntegralInRange<std::size_t>(0, 3));
            [[fallthrough]];
        case Kind::signal:
            event.dBm = bytes.ConsumeIntegralInRange(-101, 0);
            break;
        case Kind::scanning:
        case Kind::online:
            event.flag = bytes.ConsumeBool();
            break;
        case Kind::status:
            // Also numbers that no state has.
            event.status = static_cast<wifi::Communicator::SupplicantConnectionStatus>(
                bytes.ConsumeIntegralInRange(-1, 5));
            break;
        case Kind::wait:
            event.duration = makeDuration(bytes);
            break;
        case Kind::disconnect:
        case Kind::selectNameless:
        case Kind::noBss:
        case Kind::supplicantComes:
        case Kind::supplicantGoes:
        case Kind::look:
            break;
    }
    return event;
}

void run(FuzzedDataProvider& bytes) {
    const auto clock = std::make_shared<test::FakeClock>();
    wifi::ConnectionInfoHelper tracker(clock);
    test::TrackerModel model(clock);
    TrackerPromises promises;
    KeptLog& log = KeptLog::instance();
    // Reading the record may end an attempt. So reading after some events differs from reading after all events.
    const bool looksAlways = bytes.ConsumeBool();
    while (bytes.remaining_bytes() > 0) {
        const TrackerEvent event = makeEvent(bytes);
        log.clear();
        clock->advance(event.duration);
        tell(tracker, event);
        tell(model, event);
        require(tracker.getActiveTimeout() == model.getActiveTimeout(),
                "tracker and model see the same time left");
        if (looksAlways || event.kind == Kind::look) {
            require(tracker.getConnectionInfo() == model.getConnectionInfo(),
                    "tracker and model publish the same record");
        }
        require(log.texts() == model.takeTexts(), "the log tells how attempts end, and nothing else");
        promises.judgeEvent(event, log.texts());
        if (looksAlways) {
            promises.judgeRecord(event, tracker.getConnectionInfo(), clock->get());
        }
    }
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    kaz::fuzz::run(bytes);
    return 0;
}
