#pragma once

#include <wifi/network_access.h>
#include <wifi/types.h>

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>

#include <map>
#include <string>
#include <vector>

// The networks a user can choose from. The one in use or being joined is first, then the others in the library's
// order. An update changes only the rows that differ, so that the view keeps its scroll position and focus.
class NetworkModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to WifiPanel")

  public:
    struct Row {
        std::string ssid;
        int signal = 0;  // dBm
        kaz::wifi::NetworkAccess access = {{}, kaz::wifi::SecurityMode::none};
        bool saved = false;
        kaz::wifi::ConnectionInfo::Status status = kaz::wifi::ConnectionInfo::Status::disconnected;

        bool operator==(const Row& other) const;
    };
    enum Role {
        NetworkIdRole = Qt::UserRole,  // identifies the network in calls
        NameRole,                      // for display
        BarsRole,                      // 0 to 4
        SecurityRole,                  // as text
        LockedRole,
        SavedRole,
        StageRole,  // 0 not in use, 1 joining, 2 getting an address, 3 connected
    };

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    using Accesses = std::map<std::string, kaz::wifi::NetworkAccess>;
    void update(const kaz::wifi::ConnectionInfo& connection,
                const std::vector<kaz::wifi::WifiNetwork>& inRange, const Accesses& accesses = {});

    // The row of that network, or null.
    const Row* find(const std::string& ssid) const;

  private:
    std::vector<Row> wanted(const kaz::wifi::ConnectionInfo& connection,
                            const std::vector<kaz::wifi::WifiNetwork>& inRange,
                            const Accesses& accesses) const;
    void removeOthersThan(const std::vector<Row>& rows);
    void bringTo(std::size_t place, const Row& row);

    std::vector<Row> rows_;
};
