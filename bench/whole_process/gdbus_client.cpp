// A client of the supplicant over GDBus: subscribes, reads the access points, keeps their SSIDs, and waits.
//
//   gdbus_client BSS-COUNT
#include "bench/whole_process/client.h"

#include <gio/gio.h>

#include <cstdlib>
#include <set>
#include <string>

namespace {

constexpr const char* service = "fi.w1.wpa_supplicant1";
constexpr const char* interfacePath = "/fi/w1/wpa_supplicant1/Interfaces/0";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

void onChanged(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
               const gchar* /*interface*/, const gchar* /*signal*/, GVariant* /*parameters*/,
               gpointer /*context*/) {}

std::string ssidOf(GDBusConnection* bus, const std::string& path) {
    GVariant* reply = g_dbus_connection_call_sync(
        bus, service, path.c_str(), properties, "GetAll", g_variant_new("(s)", "fi.w1.wpa_supplicant1.BSS"),
        G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    GVariant* all = g_variant_get_child_value(reply, 0);
    GVariant* ssid = g_variant_lookup_value(all, "SSID", G_VARIANT_TYPE_BYTESTRING);
    gsize size = 0;
    const auto* bytes = static_cast<const char*>(g_variant_get_fixed_array(ssid, &size, 1));
    std::string text(bytes, size);
    g_variant_unref(ssid);
    g_variant_unref(all);
    g_variant_unref(reply);
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    const long before = kaz::bench::privateKilobytes();
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
    if (bus == nullptr || argc != 2) {
        return 1;
    }
    g_dbus_connection_signal_subscribe(bus, service, properties, "PropertiesChanged", interfacePath, nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, &onChanged, nullptr, nullptr);
    std::set<std::string> ssids;
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        ssids.insert(ssidOf(bus, std::string(interfacePath) + "/BSSs/" + std::to_string(i)));
    }
    kaz::bench::reportReady(before);
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    g_main_loop_run(loop);
    return 0;
}
