#include <network_model.h>

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace kaz::test {
namespace {

using wifi::ConnectionInfo;
using wifi::SecurityMode;
using wifi::WifiNetwork;

ConnectionInfo connectedTo(const std::string& ssid, int signal = -40) {
    ConnectionInfo info;
    info.status = ConnectionInfo::Status::connected;
    info.ssid = ssid;
    info.signal = signal;
    return info;
}

const std::vector<WifiNetwork> three{{"Home", -50, SecurityMode::rsnPsk, false},
                                     {"Attic", -60, SecurityMode::none, true},
                                     {"Cellar", -80, SecurityMode::wep, false}};

std::string names(const NetworkModel& model) {
    QStringList list;
    for (int row = 0; row < model.rowCount(); ++row) {
        list.append(model.data(model.index(row), NetworkModel::NameRole).toString());
    }
    return list.join(' ').toStdString();
}

TEST(PanelNetworkModel, PutsTheNetworkInUseFirstAndRemembersItsSecurity) {
    NetworkModel model;
    model.update({}, three);
    EXPECT_EQ(names(model), "Home Attic Cellar");
    model.update(connectedTo("Cellar"), {three[0], three[1]});
    EXPECT_EQ(names(model), "Cellar Home Attic");
    EXPECT_EQ(model.data(model.index(0), NetworkModel::SecurityRole), "WEP");
    EXPECT_EQ(model.data(model.index(0), NetworkModel::BarsRole), 4);
    EXPECT_EQ(model.data(model.index(0), NetworkModel::StageRole), 3);
}

TEST(PanelNetworkModel, SaysWhatANetworkAsksForThatCannotBeJoined) {
    wifi::NetworkAccess closed;
    closed.demands.owe = true;
    NetworkModel model;
    model.update({}, three, {{"Home", {{}, SecurityMode::sae}}, {"Attic", closed}});
    EXPECT_EQ(model.data(model.index(0), NetworkModel::SecurityRole), "WPA3");
    EXPECT_EQ(model.data(model.index(1), NetworkModel::SecurityRole), "Enhanced Open");
    EXPECT_EQ(model.data(model.index(2), NetworkModel::SecurityRole), "WEP");
}

TEST(PanelNetworkModel, KeepsTheSignalWhileThatOfTheConnectionIsUnknown) {
    NetworkModel model;
    model.update({}, three);
    model.update(connectedTo("Home", wifi::NoSignaldBm), {three[1], three[2]});
    EXPECT_EQ(model.data(model.index(0), NetworkModel::BarsRole), 4);
}

TEST(PanelNetworkModel, ShowsANetworkOnceWhileBothGettersNameIt) {
    NetworkModel model;
    model.update(connectedTo("Home"), three);
    EXPECT_EQ(names(model), "Home Attic Cellar");
}

TEST(PanelNetworkModel, ChangesOnlyTheRowsThatDiffer) {
    NetworkModel model;
    model.update({}, three);
    QSignalSpy inserted(&model, &NetworkModel::rowsInserted);
    QSignalSpy removed(&model, &NetworkModel::rowsRemoved);
    QSignalSpy moved(&model, &NetworkModel::rowsMoved);
    QSignalSpy changed(&model, &NetworkModel::dataChanged);
    model.update({}, three);
    EXPECT_EQ(inserted.count() + removed.count() + moved.count() + changed.count(), 0);
    auto weaker = three;
    weaker[0].signal = -70;
    std::swap(weaker[0], weaker[1]);
    model.update({}, weaker);
    EXPECT_EQ(names(model), "Attic Home Cellar");
    EXPECT_EQ(moved.count(), 1);
    EXPECT_EQ(changed.count(), 1);
    model.update({}, {weaker[1]});
    EXPECT_EQ(removed.count(), 2);
    EXPECT_EQ(inserted.count(), 0);
}

}  // namespace
}  // namespace kaz::test
