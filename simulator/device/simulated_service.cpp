#include "simulator/device/simulated_service.h"

#include <utility>

namespace kaz::sim {

SimulatedService::SimulatedService(const Environment& environment, const Neighbourhood& neighbourhood,
                                   InterfaceObject::Storage& storage, std::function<void()> stateChanged)
    : environment_(environment),
      neighbourhood_(neighbourhood),
      storage_(storage),
      stateChanged_(std::move(stateChanged)) {}

void SimulatedService::start(std::function<void()> ready) {
    transition_ =
        environment_.scheduler.after(neighbourhood_.times.unitStart, [this, ready = std::move(ready)] {
            launch();
            ready();
        });
}

void SimulatedService::stop(std::function<void()> gone) {
    transition_ = environment_.scheduler.after(neighbourhood_.times.unitStop, [this, gone = std::move(gone)] {
        if (supplicant_) {
            supplicant_->withdraw();
        }
        end();
        gone();
    });
}

void SimulatedService::kill() {
    if (!supplicant_ && !transition_.pending()) {
        return;
    }
    transition_.cancel();
    end();
    exited(false);
}

void SimulatedService::launch() {
    if (!supplicant_) {
        supplicant_ = std::make_unique<Supplicant>(environment_, neighbourhood_, storage_, stateChanged_,
                                                   [this] { kill(); });
    }
}

void SimulatedService::end() {
    supplicant_.reset();
    stateChanged_();
}

}  // namespace kaz::sim
