#include "bench/bss/bss_reader.h"
#include "communicator/bss_rules.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QStringList>
#include <QVariantMap>

#include <stdexcept>

namespace kaz::bench {
namespace {

wifi::WPA_RSN securityOf(const QVariantMap& properties, const char* key) {
    const auto inner = qdbus_cast<QVariantMap>(properties.value(key));
    wifi::WPA_RSN security;
    for (const QString& suite : inner.value("KeyMgmt").toStringList()) {
        security.keyMgmt.insert(suite.toStdString());
    }
    security.group = inner.value("Group").toString().toStdString();
    return security;
}

class QtDBusReader final : public BssReader {
  public:
    explicit QtDBusReader(const std::string& busAddress)
        : connection_(QDBusConnection::connectToBus(QString::fromStdString(busAddress), "bench")) {
        if (!connection_.isConnected()) {
            throw std::runtime_error("QtDBus does not connect");
        }
    }

    std::vector<Bss> read(const std::vector<std::string>& paths) override {
        std::vector<Bss> read;
        read.reserve(paths.size());
        for (const std::string& path : paths) {
            read.push_back(readOne(QString::fromStdString(path)));
        }
        return read;
    }

  private:
    Bss readOne(const QString& path) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(supplicantService, path, propertiesInterface, "GetAll");
        call << QString(bssInterface);
        const QDBusMessage reply = connection_.call(call, QDBus::Block);
        if (reply.type() != QDBusMessage::ReplyMessage) {
            throw std::runtime_error("the QtDBus reader failed");
        }
        const auto properties = qdbus_cast<QVariantMap>(reply.arguments().at(0));
        wifi::BSSData data;
        data.signal = properties.value("Signal").value<short>();
        data.privacy = properties.value("Privacy").toBool();
        const QByteArray ssid = properties.value("SSID").toByteArray();
        data.ssid.assign(ssid.begin(), ssid.end());
        const QByteArray bssid = properties.value("BSSID").toByteArray();
        data.bssid.value.emplace(bssid.begin(), bssid.end());
        data.frequency = {properties.value("Frequency").value<unsigned short>()};
        const auto rates = qdbus_cast<QList<unsigned int>>(properties.value("Rates"));
        data.rates.value.emplace(rates.begin(), rates.end());
        data.mode = {properties.value("Mode").toString().toStdString()};
        data.wpa = securityOf(properties, "WPA");
        data.rsn = securityOf(properties, "RSN");
        return wifi::propertiesOfBss(data);
    }

    QDBusConnection connection_;
};

}  // namespace

std::unique_ptr<BssReader> makeQtDBusReader(const std::string& busAddress) {
    return std::make_unique<QtDBusReader>(busAddress);
}

}  // namespace kaz::bench
