#include <wifi/manager.h>

#include "manager/manager_impl.h"

#include <utility>

namespace kaz::wifi {

Manager::Manager() : impl_(std::make_unique<ManagerImpl>()) {}

Manager::~Manager() = default;

void Manager::setEnabled(bool enabled) {
    impl_->setEnabled(enabled);
}

bool Manager::isEnabled() const {
    return impl_->isEnabled();
}

bool Manager::isWifiStackInitialized() const {
    return impl_->isWifiStackInitialized();
}

void Manager::onEnabledChanged(std::function<void()> callback) {
    impl_->onEnabledChanged(std::move(callback));
}

void Manager::scan() {
    impl_->scan();
}

bool Manager::isScanning() const {
    return impl_->isScanning();
}

void Manager::onScanningChanged(std::function<void()> callback) {
    impl_->onScanningChanged(std::move(callback));
}

std::vector<WifiNetwork> Manager::networks() {
    return impl_->networks();
}

std::map<std::string, NetworkAccess> Manager::networkAccess() const {
    return impl_->networkAccess();
}

void Manager::onNetworksListChanged(std::function<void()> callback) {
    impl_->onNetworksListChanged(std::move(callback));
}

std::set<std::string> Manager::eapMethods() const {
    return impl_->eapMethods();
}

std::set<std::string> Manager::phase2Methods() const {
    return impl_->phase2Methods();
}

ConnectResult Manager::connect(const ConnectionSettings& settings) {
    return impl_->connect(settings);
}

ConnectResult Manager::validate(const ConnectionSettings& settings) const {
    return impl_->validate(settings);
}

ConnectResult Manager::connect(const ConnectionSettings& settings, const Certificates& certificates) {
    return impl_->connect(settings, certificates);
}

ConnectResult Manager::validate(const ConnectionSettings& settings, const Certificates& certificates) const {
    return impl_->validate(settings, certificates);
}

void Manager::connectConfigured(const std::string& ssid) {
    impl_->connectConfigured(ssid);
}

void Manager::disconnect() {
    impl_->disconnect();
}

void Manager::forgetNetwork(const std::string& ssid) {
    impl_->forgetNetwork(ssid);
}

void Manager::whenCarriedOut(std::function<void(const RequestFailures&)> callback) {
    impl_->whenCarriedOut(std::move(callback));
}

ConnectionInfo Manager::connectionInfo() const {
    return impl_->connectionInfo();
}

void Manager::onConnectionInfoChanged(std::function<void()> callback) {
    impl_->onConnectionInfoChanged(std::move(callback));
}

ConnectionDetails Manager::connectionDetails() const {
    return impl_->connectionDetails();
}

void Manager::onConnectionDetailsChanged(std::function<void()> callback) {
    impl_->onConnectionDetailsChanged(std::move(callback));
}

void Manager::setAddressTimeout(std::chrono::milliseconds timeout) {
    impl_->setAddressTimeout(timeout);
}

}  // namespace kaz::wifi
