#pragma once

#include "communicator/communicator.h"
#include "communicator/configured_networks.h"
#include "communicator/radio.h"
#include "communicator/supplicant_interface.h"
#include "dbus/bus.h"
#include "dbus/records.h"

#include <kaz/dbus/message.h>

namespace kaz::wifi {

// Converts the signals and properties of the supplicant's interface into calls of the communicator's handlers. It reads
// the objects behind object paths from the supplicant. Loop thread only.
class SupplicantSignals {
  public:
    SupplicantSignals(dbus::Bus& bus, SupplicantInterface& supplicant, ConfiguredNetworks& networks,
                      Radio& radio, Communicator& handlers);

    // Subscribes to the signals of the attached interface until the communicator detaches.
    void subscribe() const;
    // The same for NetworkAdded, NetworkRemoved, PskMismatch and SaePasswordMismatch.
    void subscribeToNetworks() const;
    // Reads and reports the current properties.
    void readSync() const;
    // Reads and reports the current access points.
    void readBssListSync() const;

    void onSignalScanDone(dbus::MessageDecoder& decoder) const;
    void onSignalEap(dbus::MessageDecoder& decoder) const;
    void onSignalNetworkSelected(dbus::MessageDecoder& decoder) const;
    void onSignalPropertiesChanged(dbus::MessageDecoder& decoder) const;
    void onSignalNetworkAdded(dbus::MessageDecoder& decoder) const;
    void onSignalNetworkRemoved(dbus::MessageDecoder& decoder) const;
    void onSignalPskMismatch(dbus::MessageDecoder& decoder) const;
    void onSignalSaePasswordMismatch(dbus::MessageDecoder& decoder) const;

  private:
    using Report = Communicator::SupplicantInterfaceProperties;
    using SignalHandler = void (SupplicantSignals::*)(dbus::MessageDecoder&) const;

    void subscribe(const char* interface, const char* member, SignalHandler handler) const;
    void report(const dbus::SupplicantInterfaceProperties& properties) const;
    void tell(const Communicator::LinkEvidence& evidence) const;
    void resolveBssList(const dbus::SupplicantInterfaceProperties& from, Report& to) const;
    void resolveCurrentNetwork(const dbus::SupplicantInterfaceProperties& from, Report& to) const;
    void resolveCurrentBss(const dbus::SupplicantInterfaceProperties& from, Report& to) const;

    dbus::Bus& bus_;
    SupplicantInterface& supplicant_;
    ConfiguredNetworks& networks_;
    Radio& radio_;
    Communicator& handlers_;
};

}  // namespace kaz::wifi
