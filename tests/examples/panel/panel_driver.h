// The panel on a simulated device, driven by the keys and clicks of a user.
#pragma once

#include <wifi_panel.h>

#include <gtest/gtest.h>

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <ostream>

#include "base/temporary_folder.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"

// How GoogleTest shows Qt's values.
inline void PrintTo(const QSize& size, std::ostream* out) {
    *out << size.width() << 'x' << size.height();
}
inline void PrintTo(const QStringList& texts, std::ostream* out) {
    *out << texts.join(" | ").toStdString();
}
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace kaz::test {

// Lets the panel live until the condition holds. False when the time limit passes first.
bool soon(const std::function<bool()>& condition);

class PanelTest : public ::testing::Test {
  protected:
    PanelTest();
    ~PanelTest() override;

    // Puts the panel on a device with these access points around.
    void start(const sim::Neighbourhood& neighbourhood, const QString& theme = "light",
               QSize size = {480, 800});
    void start() { start(home()); }
    void stop();

    // A flat in town where things happen quickly. "Home" is the strongest.
    static sim::Neighbourhood home();

    sim::SimulatedDevice& device() { return *device_; }
    WifiPanel& panel() { return *panel_; }
    QQuickWindow& window() { return *window_; }

    // The visible item of that object name; null when there is none.
    QQuickItem* item(const QString& name) const;
    bool shows(const QString& name) const { return item(name) != nullptr; }
    // Its property as text; "(none)" when there is no such item.
    QString textOf(const QString& name, const char* property = "text") const;
    // The second line of a network's row.
    QString detailOf(const QString& network) const;
    // The networks' names from top to bottom.
    QStringList list() const;
    bool isFocused(const QString& name) const;
    // The texts that do not fit into their items or into the window, and do not say so by an ellipsis.
    QStringList clippedTexts() const;
    // How often the supplicant was asked to scan.
    int scans() const;

    void click(const QString& name);
    void choose(const QString& network);
    void dragDown(const QString& name, int distance);
    void key(Qt::Key key);
    void type(const QString& text);
    // Chooses a network that asks for a password, and joins it.
    void join(const QString& network, const QString& password);
    bool becomes(const QString& network, const QString& detail);

    // Keeps a picture of the window when KAZ_SCREENSHOTS names a folder.
    void keepPicture(const QString& name);

  private:
    TemporaryFolder folder_;
    sim::PrivateBus bus_;
    std::unique_ptr<sim::SimulatedDevice> device_;
    std::unique_ptr<WifiPanel> panel_;
    std::unique_ptr<QQmlApplicationEngine> engine_;
    QQuickWindow* window_ = nullptr;
};

}  // namespace kaz::test
