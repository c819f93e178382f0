#include "simulator/device/device.h"

#include <algorithm>
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

void nameAccessPoints(Neighbourhood& neighbourhood) {
    for (AccessPoint& accessPoint : neighbourhood.accessPoints) {
        if (accessPoint.bssid.empty()) {
            accessPoint.bssid = neighbourhood.freeBssid();
        }
    }
}

}  // namespace

Device::Device(sd_event* event, DeviceOptions options, CallLog& log)
    : neighbourhood_(std::move(options.neighbourhood)),
      environment_{options.busAddress, Scheduler(event, options.timeScale), faults_, log},
      storage_(storageOf(neighbourhood_, options.configFile)),
      networkd_(std::make_unique<Networkd>(environment_, neighbourhood_.times)) {
    nameAccessPoints(neighbourhood_);
    if (options.realSupplicant) {
        process_ = std::make_unique<RealService>(environment_, storage_.file,
                                                 [this](bool up) { networkd_->linkIs(up); });
    } else {
        auto simulated = std::make_unique<SimulatedService>(environment_, neighbourhood_, storage_,
                                                            [this] { followLink(); });
        simulated_ = simulated.get();
        process_ = std::move(simulated);
    }
    if (simulated_ != nullptr && neighbourhood_.unitActive) {
        simulated_->launch();
    }
    systemd_ = std::make_unique<Systemd>(environment_, neighbourhood_.times, *process_);
    if (simulated_ != nullptr && neighbourhood_.unitActive) {
        systemd_->unit().force({"active", "running"});
    } else if (neighbourhood_.unitActive) {
        ready_ = false;
        systemd_->unit().start([this](bool) { ready_ = true; });
    }
    control_ = std::make_unique<Control>(environment_, *this);
}

Device::~Device() = default;

std::string Device::addAccessPoint(AccessPoint accessPoint) {
    if (accessPoint.bssid.empty()) {
        accessPoint.bssid = neighbourhood_.freeBssid();
    } else if (neighbourhood_.find(accessPoint.bssid) != nullptr) {
        throw std::invalid_argument("there is an access point " + accessPoint.bssid + " already");
    }
    std::string bssid = accessPoint.bssid;
    neighbourhood_.accessPoints.push_back(std::move(accessPoint));
    accessPointsChanged();
    return bssid;
}

bool Device::removeAccessPoint(const std::string& bssid) {
    const auto removed = std::erase_if(neighbourhood_.accessPoints, [&](const AccessPoint& accessPoint) {
        return accessPoint.bssid == bssid;
    });
    accessPointsChanged();
    return removed > 0;
}

bool Device::alterAccessPoint(const std::string& bssid, const std::function<void(AccessPoint&)>& alter) {
    AccessPoint* const accessPoint = neighbourhood_.find(bssid);
    if (accessPoint == nullptr) {
        return false;
    }
    alter(*accessPoint);
    accessPoint->bssid = bssid;
    return true;
}

bool Device::setSignal(const std::string& bssid, std::int16_t dBm) {
    return alterAccessPoint(bssid, [dBm](AccessPoint& accessPoint) { accessPoint.signal = dBm; });
}

void Device::deauthenticate(int reason) {
    if (InterfaceObject* const present = interface()) {
        present->station().deauthenticated(reason);
    }
}

void Device::dropLink() {
    if (InterfaceObject* const present = interface()) {
        present->station().connectionLost();
    }
}

void Device::storm(unsigned signals) {
    if (InterfaceObject* const present = interface()) {
        present->storm(signals);
    }
}

void Device::removeInterface() {
    if (Supplicant* const running = supplicant()) {
        running->removeInterface();
    }
}

void Device::addInterface() {
    if (Supplicant* const running = supplicant()) {
        running->addInterface();
    }
}

void Device::removeOtherInterface() {
    if (Supplicant* const running = supplicant()) {
        running->removeOtherInterface();
    }
}

void Device::addOtherInterface() {
    if (Supplicant* const running = supplicant()) {
        running->addOtherInterface();
    }
}

bool Device::selectNetwork(const std::string& ssid) {
    InterfaceObject* const present = interface();
    if (present == nullptr) {
        return false;
    }
    const auto& all = present->networks().all();
    const auto wanted = std::find_if(all.begin(), all.end(),
                                     [&](const auto& network) { return network->config.ssid() == ssid; });
    if (wanted == all.end()) {
        return false;
    }
    present->station().select(**wanted);
    return true;
}

void Device::restartSupplicant() {
    systemd_->unit().restart([](bool) {});
}

std::string Device::supplicantState() {
    InterfaceObject* const present = interface();
    return present == nullptr ? std::string() : std::string(toText(present->station().state()));
}

void Device::accessPointsChanged() {
    if (InterfaceObject* const present = interface()) {
        present->station().accessPointsChanged();
    }
}

void Device::followLink() {
    InterfaceObject* const present = interface();
    networkd_->linkIs(present != nullptr && present->station().state() == State::completed);
}

InterfaceObject* Device::interface() {
    Supplicant* const running = supplicant();
    return running == nullptr ? nullptr : running->interface();
}

}  // namespace kaz::sim
