#include "examples/panel/panel_driver.h"

#include <stdlib.h>

#include <QGuiApplication>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "simulator/world/neighbourhood_json.h"
#include "support/waiting/waiting.h"

Q_IMPORT_QML_PLUGIN(PanelPlugin)

namespace kaz::test {
namespace {

// One application a process, as Qt wants it.
class Application : public ::testing::Environment {
  public:
    void SetUp() override {
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::setenv("QT_QUICK_BACKEND", "software", 1);
        static int count = 1;
        static char name[] = "panel";
        static char* arguments[] = {name, nullptr};
        application_ = std::make_unique<QGuiApplication>(count, arguments);
    }
    void TearDown() override { application_.reset(); }

  private:
    std::unique_ptr<QGuiApplication> application_;
};

const auto* const application =
    ::testing::AddGlobalTestEnvironment(new Application);  // GoogleTest's to delete

void visit(QQuickItem* item, const std::function<void(QQuickItem*)>& visitor) {
    if (item->isVisible()) {
        visitor(item);
        for (QQuickItem* child : item->childItems()) {
            visit(child, visitor);
        }
    }
}

QQuickItem* find(QQuickItem* from, const QString& name) {
    QQuickItem* found = nullptr;
    visit(from, [&](QQuickItem* item) {
        if (found == nullptr && item->objectName() == name) {
            found = item;
        }
    });
    return found;
}

}  // namespace

bool soon(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, std::chrono::milliseconds(timeLimit).count());
}

PanelTest::PanelTest() {
    ::setenv("KAZ_CONFIG_FILE", (folder_ / "kaz.conf").c_str(), 1);
    bus_.becomeSystemBus();
}

PanelTest::~PanelTest() {
    stop();
}

void PanelTest::stop() {
    engine_.reset();
    panel_.reset();
    device_.reset();
}

void PanelTest::start(const sim::Neighbourhood& neighbourhood, const QString& theme, QSize size) {
    device_ = std::make_unique<sim::SimulatedDevice>(
        sim::SimulatedDevice::Options{bus_.address(), neighbourhood, 1.0, {}, false});
    panel_ = std::make_unique<WifiPanel>();
    engine_ = std::make_unique<QQmlApplicationEngine>();
    engine_->addImportPath(":/qt/qml");
    engine_->setInitialProperties({{"panel", QVariant::fromValue(panel_.get())},
                                   {"theme", theme},
                                   {"width", size.width()},
                                   {"height", size.height()}});
    engine_->load(QUrl("qrc:/qt/qml/Panel/qml/Main.qml"));
    if (engine_->rootObjects().isEmpty()) {
        throw std::runtime_error("the QML does not load");
    }
    window_ = qobject_cast<QQuickWindow*>(engine_->rootObjects().constFirst());
    window_->requestActivate();
    if (!QTest::qWaitForWindowActive(window_)) {
        throw std::runtime_error("the window does not show");
    }
}

sim::Neighbourhood PanelTest::home() {
    return sim::readNeighbourhood(PANEL_NEIGHBOURHOOD);
}

QQuickItem* PanelTest::item(const QString& name) const {
    return find(window_->contentItem(), name);
}

QString PanelTest::textOf(const QString& name, const char* property) const {
    const QQuickItem* found = item(name);
    return found == nullptr ? QString("(none)") : found->property(property).toString();
}

QString PanelTest::detailOf(const QString& network) const {
    QQuickItem* row = item("row:" + network);
    const QQuickItem* detail = row == nullptr ? nullptr : find(row, "detail");
    return detail == nullptr ? QString("(none)") : detail->property("text").toString();
}

QStringList PanelTest::list() const {
    QStringList names;
    const NetworkModel& model = *panel_->networks();
    for (int row = 0; row < model.rowCount(); ++row) {
        names.append(model.data(model.index(row), NetworkModel::NameRole).toString());
    }
    return names;
}

bool PanelTest::isFocused(const QString& name) const {
    const QQuickItem* found = item(name);
    return found != nullptr && found->hasActiveFocus();
}

QStringList PanelTest::clippedTexts() const {
    QStringList clipped;
    visit(window_->contentItem(), [&](QQuickItem* item) {
        const QString text = item->property("text").toString();
        const QVariant truncated = item->property("truncated");  // what only texts have
        if (!truncated.isValid() || text.isEmpty()) {
            return;
        }
        const bool elides = item->property("elide").toInt() != Qt::ElideNone;
        const double left = item->mapToScene({0, 0}).x();
        const bool inside = left >= 0 && left + item->width() <= window_->width();
        const bool fits = elides || item->property("contentWidth").toDouble() <= item->width() + 1;
        if (!inside || !fits) {
            clipped.append(text);
        }
    });
    return clipped;
}

int PanelTest::scans() const {
    const auto calls = device_->calls();
    return static_cast<int>(std::count_if(calls.begin(), calls.end(),
                                          [](const sim::Call& call) { return call.member == "Scan"; }));
}

void PanelTest::dragDown(const QString& name, int distance) {
    constexpr int step = 20;
    const QQuickItem* target = item(name);
    ASSERT_NE(target, nullptr);
    QPoint place = target->mapToScene({target->width() / 2, target->height() / 4}).toPoint();
    QTest::mousePress(window_, Qt::LeftButton, {}, place);
    for (int moved = 0; moved < distance; moved += step) {
        place += QPoint(0, step);
        QTest::mouseMove(window_, place);
    }
    QTest::mouseRelease(window_, Qt::LeftButton, {}, place);
}

void PanelTest::click(const QString& name) {
    ASSERT_TRUE(soon([&] { return shows(name); })) << name.toStdString() << " does not show";
    const QQuickItem* target = item(name);
    const QPointF middle = target->mapToScene({target->width() / 2, target->height() / 2});
    QTest::mouseClick(window_, Qt::LeftButton, {}, middle.toPoint());
}

void PanelTest::choose(const QString& network) {
    ASSERT_TRUE(soon([&] { return list().contains(network); })) << network.toStdString() << " is not listed";
    constexpr int contain = 4;  // ListView.Contain
    QMetaObject::invokeMethod(item("list"), "positionViewAtIndex",
                              Q_ARG(int, static_cast<int>(list().indexOf(network))), Q_ARG(int, contain));
    click("row:" + network);
}

void PanelTest::key(Qt::Key key) {
    QTest::keyClick(window_, key);
}

void PanelTest::type(const QString& text) {
    for (const QChar letter : text) {
        QTest::sendKeyEvent(QTest::Click, window_, Qt::Key_unknown, QString(letter), Qt::NoModifier);
    }
}

void PanelTest::join(const QString& network, const QString& password) {
    choose(network);
    ASSERT_TRUE(soon([&] { return isFocused("passwordField"); }));
    type(password);
    key(Qt::Key_Return);
}

bool PanelTest::becomes(const QString& network, const QString& detail) {
    return soon([&] { return detailOf(network) == detail; });
}

void PanelTest::keepPicture(const QString& name) {
    if (const auto folder = qEnvironmentVariable("KAZ_SCREENSHOTS"); !folder.isEmpty()) {
        ASSERT_TRUE(window_->grabWindow()
                        .convertToFormat(QImage::Format_RGB32)
                        .save(folder + "/panel-" + name + ".png"));
    }
}

}  // namespace kaz::test
