#include "device.h"

#include <stdexcept>
#include <utility>

namespace kaz::sim {
namespace {

InterfaceObject::Storage storageOf(const Neighbourhood& neighbourhood, const std::filesystem::path& file) {
    InterfaceObject::Storage storage{.file = file, .config = {}};
    if (!file.empty() && std::filesystem::exists(file)) {
        storage.config = readConfig(file, neighbourhood.eapMethods);
        return storage;
    }
    storage.config.updateConfig = neighbourhood.updateConfig;
    for (const Settings& settings : neighbourhood.configuredNetworks) {
        NetworkConfig network;
        if (!network.setAll(settings, neighbourhood.eapMethods)) {
            throw std::runtime_error("the neighbourhood has a configured network that cannot be");
        }
        storage.config.networks.push_back(std::move(network));
    }
    return storage;
}

}  // namespace

Device::Device(sd_event* event, const std::string& busAddress, Neighbourhood neighbourhood, double timeScale,
               const std::filesystem::path& configFile, CallLog& log)
    : neighbourhood_(std::move(neighbourhood)),
      environment_{busAddress, Scheduler(event, timeScale), faults_, log},
      storage_(storageOf(neighbourhood_, configFile)),
      networkd_(std::make_unique<Networkd>(environment_, neighbourhood_.times)),
      service_(environment_, neighbourhood_, storage_, [this] { followLink(); }) {
    if (neighbourhood_.unitActive) {
        service_.launch();
    }
    systemd_ = std::make_unique<Systemd>(environment_, neighbourhood_.times, service_);
    if (neighbourhood_.unitActive) {
        unit().force({"active", "running"});
    }
}

Device::~Device() = default;

void Device::accessPointsChanged() {
    if (Supplicant* const running = supplicant()) {
        running->station().accessPointsChanged();
    }
}

void Device::followLink() {
    Supplicant* const running = supplicant();
    networkd_->linkIs(running != nullptr && running->station().state() == State::completed);
}

}  // namespace kaz::sim
