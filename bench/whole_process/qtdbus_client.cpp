// A client of the supplicant over QtDBus: subscribes, reads the access points, keeps their SSIDs, and waits.
//
//   qtdbus_client BSS-COUNT
#include "bench/whole_process/client.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QSet>
#include <QVariantMap>

#include <cstdlib>

namespace {

const QString service = "fi.w1.wpa_supplicant1";
const QString interfacePath = "/fi/w1/wpa_supplicant1/Interfaces/0";
const QString properties = "org.freedesktop.DBus.Properties";

QByteArray ssidOf(QDBusConnection& bus, const QString& path) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, properties, "GetAll");
    call << QString("fi.w1.wpa_supplicant1.BSS");
    const QDBusMessage reply = bus.call(call, QDBus::Block);
    return qdbus_cast<QVariantMap>(reply.arguments().at(0)).value("SSID").toByteArray();
}

}  // namespace

int main(int argc, char** argv) {
    const long before = kaz::bench::privateKilobytes();
    QCoreApplication application(argc, argv);
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected() || argc != 2) {
        return 1;
    }
    bus.connect(service, interfacePath, properties, "PropertiesChanged", &application, SLOT(quit()));
    QSet<QByteArray> ssids;
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        ssids.insert(ssidOf(bus, interfacePath + "/BSSs/" + QString::number(i)));
    }
    kaz::bench::reportReady(before);
    return QCoreApplication::exec();
}
