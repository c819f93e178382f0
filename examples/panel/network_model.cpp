#include "network_model.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "ssid_text.h"
#include "words.h"

using kaz::wifi::ConnectionInfo;
using kaz::wifi::NetworkAccess;
using kaz::wifi::SecurityMode;
using kaz::wifi::WifiNetwork;

namespace {

int barsOf(int dBm) {
    if (dBm == 0 || dBm == kaz::wifi::NoSignaldBm) {  // unknown
        return 0;
    }
    constexpr std::array limits{-85, -75, -67, -55};
    return static_cast<int>(
        std::count_if(limits.begin(), limits.end(), [&](int limit) { return dBm >= limit; }));
}

auto hasSsid(const std::string& ssid) {
    return [&ssid](const NetworkModel::Row& row) { return row.ssid == ssid; };
}

}  // namespace

bool NetworkModel::Row::operator==(const Row& other) const {
    return ssid == other.ssid && signal == other.signal && access == other.access && saved == other.saved &&
           status == other.status;
}

int NetworkModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant NetworkModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case NetworkIdRole:
            return idOfSsid(row.ssid);
        case NameRole:
            return shownSsid(row.ssid);
        case BarsRole:
            return barsOf(row.signal);
        case SecurityRole:
            return securityInWords(row.access);
        case LockedRole:
            return row.access.mode != SecurityMode::none;
        case SavedRole:
            return row.saved;
        case StageRole:
            return static_cast<int>(row.status);
        default:
            return {};
    }
}

QHash<int, QByteArray> NetworkModel::roleNames() const {
    return {{NetworkIdRole, "networkId"}, {NameRole, "name"},     {BarsRole, "bars"},
            {SecurityRole, "security"},   {LockedRole, "locked"}, {SavedRole, "saved"},
            {StageRole, "stage"}};
}

void NetworkModel::update(const ConnectionInfo& connection, const std::vector<WifiNetwork>& inRange,
                          const Accesses& accesses) {
    const auto rows = wanted(connection, inRange, accesses);
    removeOthersThan(rows);
    for (std::size_t place = 0; place < rows.size(); ++place) {
        bringTo(place, rows[place]);
    }
}

const NetworkModel::Row* NetworkModel::find(const std::string& ssid) const {
    const auto found = std::find_if(rows_.begin(), rows_.end(), hasSsid(ssid));
    return found == rows_.end() ? nullptr : &*found;
}

std::vector<NetworkModel::Row> NetworkModel::wanted(const ConnectionInfo& connection,
                                                    const std::vector<WifiNetwork>& inRange,
                                                    const Accesses& accesses) const {
    const auto accessTo = [&](const WifiNetwork& network) {
        const auto known = accesses.find(network.ssid);
        return known == accesses.end() ? NetworkAccess{{}, network.securityMode} : known->second;
    };
    std::vector<Row> rows;
    if (connection.status != ConnectionInfo::Status::disconnected) {
        // The list leaves out the network in use, so keep what was known about it.
        Row current;
        if (const Row* known = find(connection.ssid)) {
            current = *known;
        }
        if (const auto known = accesses.find(connection.ssid); known != accesses.end()) {
            current.access = known->second;
        }
        current.ssid = connection.ssid;
        current.saved = true;
        current.status = connection.status;
        if (barsOf(connection.signal) > 0 || current.signal == 0) {
            current.signal = connection.signal;
        }
        rows.push_back(current);
    }
    for (const WifiNetwork& network : inRange) {
        if (rows.empty() || rows.front().ssid != network.ssid) {
            rows.push_back({network.ssid, network.signal, accessTo(network), network.configured});
        } else {
            rows.front().access = accessTo(network);
        }
    }
    return rows;
}

void NetworkModel::removeOthersThan(const std::vector<Row>& rows) {
    for (int i = rowCount() - 1; i >= 0; --i) {
        const auto row = rows_.begin() + i;
        if (std::none_of(rows.begin(), rows.end(), hasSsid(row->ssid))) {
            beginRemoveRows({}, i, i);
            rows_.erase(row);
            endRemoveRows();
        }
    }
}

void NetworkModel::bringTo(std::size_t place, const Row& row) {
    const int to = static_cast<int>(place);
    const auto target = rows_.begin() + to;
    const auto found = std::find_if(target, rows_.end(), hasSsid(row.ssid));
    if (found == rows_.end()) {
        beginInsertRows({}, to, to);
        rows_.insert(target, row);
        endInsertRows();
        return;
    }
    if (found != target) {
        const int from = static_cast<int>(std::distance(rows_.begin(), found));
        beginMoveRows({}, from, from, {}, to);
        std::rotate(target, found, found + 1);
        endMoveRows();
    }
    if (!(rows_[place] == row)) {
        rows_[place] = row;
        Q_EMIT dataChanged(index(to), index(to));
    }
}
