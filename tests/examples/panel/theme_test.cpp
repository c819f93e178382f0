#include <gtest/gtest.h>

#include <QColor>
#include <QQmlComponent>
#include <QQmlEngine>

#include <algorithm>
#include <cmath>
#include <memory>

namespace kaz::test {
namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& a, const QColor& b) {
    const auto [low, high] = std::minmax(luminance(a), luminance(b));
    return (high + 0.05) / (low + 0.05);
}

TEST(PanelTheme, TextStandsOutFromItsGround) {
    struct Pair {
        const char* text;
        const char* ground;
        double least = 4.5;
    };
    QQmlEngine engine;
    engine.addImportPath(":/qt/qml");
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport Panel\nQtObject { property var theme: Theme }", {});
    const std::unique_ptr<QObject> holder(component.create());
    ASSERT_NE(holder, nullptr) << component.errorString().toStdString();
    auto* theme = holder->property("theme").value<QObject*>();
    for (const char* choice : {"light", "dark"}) {
        theme->setProperty("choice", choice);
        for (const Pair& pair :
             {Pair{"text", "background"}, Pair{"text", "card"}, Pair{"text", "pressed"},
              Pair{"secondaryText", "background"}, Pair{"secondaryText", "card"},
              Pair{"secondaryText", "pressed"}, Pair{"accent", "card"}, Pair{"accent", "background"},
              Pair{"accentText", "accent"}, Pair{"danger", "card"}, Pair{"danger", "dangerGround"},
              Pair{"dangerText", "danger"}, Pair{"outline", "card", 3}, Pair{"outline", "background", 3}}) {
            EXPECT_GE(contrast(theme->property(pair.text).value<QColor>(),
                               theme->property(pair.ground).value<QColor>()),
                      pair.least)
                << pair.text << " on " << pair.ground << ", " << choice;
        }
    }
}

}  // namespace
}  // namespace kaz::test
