// A Wi-Fi settings panel. KAZ_PANEL_THEME=light or dark overrides the theme of the system.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QtQml/QQmlExtensionPlugin>

#include "wifi_panel.h"

Q_IMPORT_QML_PLUGIN(PanelPlugin)

int main(int argc, char** argv) {
    const QGuiApplication app(argc, argv);
    WifiPanel panel;  // must outlive the engine, whose items are bound to it
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral(":/qt/qml"));
    engine.setInitialProperties(
        {{"panel", QVariant::fromValue(&panel)},
         {"theme", qEnvironmentVariable("KAZ_PANEL_THEME", QStringLiteral("system"))}});
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Panel/qml/Main.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
