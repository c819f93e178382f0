#include "bench/bss/bss_reader.h"
#include "communicator/bss_rules.h"

#include <gio/gio.h>

#include <stdexcept>

namespace kaz::bench {
namespace {

struct Unref {
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Value = std::unique_ptr<GVariant, Unref>;

wifi::WPA_RSN securityOf(GVariant* properties, const char* key) {
    wifi::WPA_RSN security;
    const Value inner(g_variant_lookup_value(properties, key, G_VARIANT_TYPE_VARDICT));
    if (inner == nullptr) {
        return security;
    }
    if (const Value suites{g_variant_lookup_value(inner.get(), "KeyMgmt", G_VARIANT_TYPE_STRING_ARRAY)}) {
        GVariantIter suite;
        const char* text = nullptr;
        g_variant_iter_init(&suite, suites.get());
        while (g_variant_iter_next(&suite, "&s", &text) != 0) {
            security.keyMgmt.insert(text);
        }
    }
    const char* group = nullptr;
    if (g_variant_lookup(inner.get(), "Group", "&s", &group) != 0) {
        security.group = group;
    }
    return security;
}

template <typename Element>
std::vector<Element> arrayOf(GVariant* properties, const char* key, const GVariantType* type) {
    const Value array(g_variant_lookup_value(properties, key, type));
    if (array == nullptr) {
        return {};
    }
    gsize size = 0;
    const auto* elements =
        static_cast<const Element*>(g_variant_get_fixed_array(array.get(), &size, sizeof(Element)));
    return {elements, elements + size};
}

class GDBusReader final : public BssReader {
  public:
    explicit GDBusReader(const std::string& busAddress)
        : connection_(g_dbus_connection_new_for_address_sync(
              busAddress.c_str(),
              static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
              nullptr, nullptr, nullptr)) {
        if (connection_ == nullptr) {
            throw std::runtime_error("GDBus does not connect");
        }
    }

    std::vector<Bss> read(const std::vector<std::string>& paths) override {
        std::vector<Bss> read;
        read.reserve(paths.size());
        for (const std::string& path : paths) {
            read.push_back(readOne(path.c_str()));
        }
        return read;
    }

  private:
    Bss readOne(const char* path) {
        const Value reply(g_dbus_connection_call_sync(
            connection_.get(), supplicantService, path, propertiesInterface, "GetAll",
            g_variant_new("(s)", bssInterface), G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, -1,
            nullptr, nullptr));
        if (reply == nullptr) {
            throw std::runtime_error("the GDBus reader failed");
        }
        const Value properties(g_variant_get_child_value(reply.get(), 0));
        wifi::BSSData data;
        gint16 signal = 0;
        gboolean privacy = 0;
        g_variant_lookup(properties.get(), "Signal", "n", &signal);
        g_variant_lookup(properties.get(), "Privacy", "b", &privacy);
        data.signal = signal;
        data.privacy = privacy != 0;
        data.ssid = arrayOf<unsigned char>(properties.get(), "SSID", G_VARIANT_TYPE_BYTESTRING);
        data.bssid = {arrayOf<unsigned char>(properties.get(), "BSSID", G_VARIANT_TYPE_BYTESTRING)};
        data.rates = {arrayOf<unsigned int>(properties.get(), "Rates", G_VARIANT_TYPE("au"))};
        guint16 frequency = 0;
        g_variant_lookup(properties.get(), "Frequency", "q", &frequency);
        data.frequency = {frequency};
        const char* mode = nullptr;
        g_variant_lookup(properties.get(), "Mode", "&s", &mode);
        data.mode = {mode};
        data.wpa = securityOf(properties.get(), "WPA");
        data.rsn = securityOf(properties.get(), "RSN");
        return wifi::propertiesOfBss(data);
    }

    std::unique_ptr<GDBusConnection, Unref> connection_;
};

}  // namespace

std::unique_ptr<BssReader> makeGDBusReader(const std::string& busAddress) {
    return std::make_unique<GDBusReader>(busAddress);
}

}  // namespace kaz::bench
