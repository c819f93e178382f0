#include "unit/kazwifictl/fake_world.h"

#include <algorithm>
#include <utility>

namespace kaz::test {

using wifi::ConnectionInfo;

namespace {

FakeWorld* livingWorld = nullptr;

}  // namespace

FakeWorld::FakeWorld() {
    livingWorld = this;
}

FakeWorld::~FakeWorld() {
    livingWorld = nullptr;
}

FakeWorld& FakeWorld::current() {
    return *livingWorld;
}

void FakeWorld::record(const std::string& what) {
    const std::lock_guard lock(mutex);
    done.push_back(what);
    changed.notify_all();
}

bool FakeWorld::did(const std::string& what) {
    const std::vector<std::string> all = everything();
    return std::find(all.begin(), all.end(), what) != all.end();
}

bool FakeWorld::hasSaved(const std::string& ssid) {
    const std::lock_guard lock(mutex);
    return saved.contains(ssid);
}

std::vector<std::string> FakeWorld::everything() {
    const std::lock_guard lock(mutex);
    return done;
}

wifi::WifiNetwork network(std::string ssid, int signal, wifi::SecurityMode mode, bool configured) {
    return {std::move(ssid), signal, mode, configured};
}

ConnectionInfo connectedTo(std::string ssid, int signal) {
    ConnectionInfo info;
    info.status = ConnectionInfo::Status::connected;
    info.ssid = std::move(ssid);
    info.signal = signal;
    return info;
}

}  // namespace kaz::test
