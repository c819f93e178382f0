#include <QColor>
#include <QGuiApplication>
#include <QPalette>

#include "examples/panel/panel_driver.h"

namespace kaz::test {
namespace {

const QStringList allAround{"Home",  "Björk & Søn", "Cafe Mirror", "Attic",
                            "Vault", "Campus",      "Cellar",      "Free\uFFFD\uFFFD\uFFFD"};

class Panel : public PanelTest {
  protected:
    void startAndLookAround(const QString& theme = "light", QSize size = {480, 800}) {
        start(home(), theme, size);
        ASSERT_TRUE(soon([this] { return list() == allAround && !panel().isScanning(); }))
            << list().join(", ").toStdString();
        ASSERT_TRUE(soon([this] { return shows("row:Home"); }));
    }
    bool problemIs(const QString& words) {
        return soon([&] { return textOf("problem") == words; });
    }
    bool isDark() { return window().property("color").value<QColor>().lightnessF() < 0.5; }
    bool isEnabled(const QString& name) const { return item(name) != nullptr && item(name)->isEnabled(); }
};

TEST_F(Panel, ListsTheNetworksStrongestFirstWithTheirNamesMadeHarmless) {
    startAndLookAround();
    EXPECT_EQ(detailOf("Home"), "WPA2");
    EXPECT_EQ(detailOf("Cafe Mirror"), "Open");
    EXPECT_EQ(detailOf("Vault"), "WPA3");
    EXPECT_EQ(textOf("row:Home", "bars"), "4");
    EXPECT_EQ(textOf("row:Cellar", "bars"), "1");
    EXPECT_EQ(textOf("row:Home", "locked"), "true");
    EXPECT_EQ(textOf("row:Cafe Mirror", "locked"), "false");
}

TEST_F(Panel, RefreshBringsANetworkThatAppearedSince) {
    startAndLookAround();
    sim::AccessPoint newcomer;
    newcomer.ssid = "Newcomer";
    newcomer.signal = -50;
    device().addAccessPoint(newcomer);
    click("scanButton");
    EXPECT_TRUE(soon([this] { return list().contains("Newcomer"); }));
    EXPECT_EQ(list().indexOf("Newcomer"), 1);
}

TEST_F(Panel, JoinsAnOpenNetworkAfterOneQuestion) {
    startAndLookAround();
    choose("Cafe Mirror");
    ASSERT_TRUE(soon([this] { return isFocused("acceptButton"); }));
    EXPECT_EQ(textOf("acceptButton"), "Join");
    click("acceptButton");
    EXPECT_TRUE(becomes("Cafe Mirror", "Connected"));
    EXPECT_EQ(list().first(), "Cafe Mirror");
}

TEST_F(Panel, ChecksThePasswordWhileItIsTypedAndJoins) {
    startAndLookAround();
    choose("Home");
    ASSERT_TRUE(soon([this] { return isFocused("passwordField"); }));
    EXPECT_EQ(textOf("passwordFieldSupport"), "8 to 63 characters");
    EXPECT_FALSE(isEnabled("acceptButton"));
    type("correct");
    EXPECT_EQ(textOf("passwordFieldSupport"), "Too short: at least 8 characters");
    EXPECT_FALSE(isEnabled("acceptButton"));
    keepPicture("validation");
    key(Qt::Key_Return);
    EXPECT_TRUE(shows("passwordField")) << "Enter closed the dialog though the password is too short";
    type(" horse");
    EXPECT_EQ(textOf("passwordFieldSupport"), "8 to 63 characters");
    EXPECT_TRUE(isEnabled("acceptButton"));
    click("acceptButton");
    EXPECT_TRUE(becomes("Home", "Connected"));
    EXPECT_EQ(list().first(), "Home");
}

TEST_F(Panel, ShowsThePasswordOnlyWhenAsked) {
    startAndLookAround();
    choose("Home");
    ASSERT_TRUE(soon([this] { return isFocused("passwordField"); }));
    type("correct horse");
    EXPECT_NE(textOf("passwordField", "displayText"), "correct horse");
    click("passwordFieldReveal");
    EXPECT_EQ(textOf("passwordField", "displayText"), "correct horse");
    click("cancelButton");
    EXPECT_TRUE(panel().form()->password().isEmpty()) << "the password outlives the dialog";
}

TEST_F(Panel, SaysThatThePasswordIsProbablyWrongAndLetsItBeTypedAgain) {
    startAndLookAround();
    join("Björk & Søn", "incorrect donkey");
    EXPECT_TRUE(problemIs("Could not join “Björk & Søn”: the password is probably wrong."));
    EXPECT_TRUE(becomes("Björk & Søn", "WPA2"))
        << "the network is saved: " << detailOf("Björk & Søn").toStdString();
    keepPicture("wrong-password");
    click("retryButton");
    ASSERT_TRUE(soon([this] { return isFocused("passwordField"); }));
    EXPECT_TRUE(textOf("passwordField").isEmpty());
    type("smorgasbord");
    key(Qt::Key_Return);
    EXPECT_TRUE(becomes("Björk & Søn", "Connected"));
    EXPECT_FALSE(shows("problem"));
}

TEST_F(Panel, ShowsTheStagesOfJoining) {
    auto slow = home();
    slow.times.dhcp = std::chrono::hours(1);
    start(slow);
    ASSERT_TRUE(soon([this] { return shows("row:Home"); }));
    join("Home", "correct horse");
    EXPECT_TRUE(becomes("Home", "Getting an address…"));
    keepPicture("joining");
    device().setOnlineState("online");
    EXPECT_TRUE(becomes("Home", "Connected"));
}

TEST_F(Panel, SaysThatANetworkDoesNotAnswer) {
    startAndLookAround();
    click("hiddenButton");
    ASSERT_TRUE(soon([this] { return isFocused("ssidField"); }));
    type("Nobody");
    click("passwordField");
    type("whatever it is");
    key(Qt::Key_Return);
    EXPECT_TRUE(problemIs("Could not join “Nobody”: no access point with this name answered."))
        << textOf("problem").toStdString();
}

TEST_F(Panel, SaysThatTheConnectionWasLost) {
    auto quick = home();
    quick.times.beaconLoss = std::chrono::milliseconds(50);
    quick.times.reconnect = std::chrono::hours(1);
    start(quick);
    ASSERT_TRUE(soon([this] { return shows("row:Home"); }));
    join("Home", "correct horse");
    ASSERT_TRUE(becomes("Home", "Connected"));
    device().dropLink();
    EXPECT_TRUE(problemIs("The connection to “Home” was lost: the access point is probably gone."));
    click("dismissButton");
    EXPECT_FALSE(shows("problem"));
}

TEST_F(Panel, JoinsAHiddenNetworkByNameAndSecurity) {
    startAndLookAround();
    click("hiddenButton");
    ASSERT_TRUE(soon([this] { return isFocused("ssidField"); }));
    EXPECT_FALSE(isEnabled("acceptButton"));
    type("Speakeasy");
    EXPECT_FALSE(isEnabled("acceptButton"));
    click("passwordField");
    type("joe sent me");
    EXPECT_TRUE(isEnabled("acceptButton"));
    keepPicture("hidden");
    click("acceptButton");
    EXPECT_TRUE(becomes("Speakeasy", "Connected"));
}

TEST_F(Panel, JoinsAnEnterpriseNetworkWithIdentityAndMethods) {
    startAndLookAround("light", {800, 480});
    choose("Campus");
    ASSERT_TRUE(soon([this] { return isFocused("identityField"); }));
    EXPECT_FALSE(isEnabled("acceptButton"));
    type("ada");
    click("passwordField");
    type("engine");
    EXPECT_TRUE(isEnabled("acceptButton"));
    EXPECT_EQ(textOf("methodBox", "displayText"), "Automatic");
    click("methodBox");
    ASSERT_TRUE(soon([this] {
        return item("methodBox")->property("popup").value<QObject*>()->property("opened").toBool();
    }));
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_EQ(panel().form()->eapMethod(), "PEAP");
    EXPECT_EQ(textOf("methodBox", "displayText"), "PEAP");
    keepPicture("enterprise-landscape");
    click("acceptButton");
    EXPECT_TRUE(becomes("Campus", "Connected"));
}

TEST_F(Panel, SaysThatTheServerIsNotVerifiedAndVerifiesIt) {
    startAndLookAround("light", {800, 480});
    choose("Campus");
    ASSERT_TRUE(soon([this] { return isFocused("identityField"); }));
    type("ada");
    click("passwordField");
    type("engine");
    EXPECT_TRUE(textOf("serverRemark").contains("The server is not verified"));
    click("domainField");
    type("example.org");
    EXPECT_FALSE(isEnabled("acceptButton"));
    click("caFileField");
    type("/etc/campus.pem");
    EXPECT_EQ(textOf("serverRemark"), "(none)") << "it is not shown";
    EXPECT_TRUE(isEnabled("acceptButton"));
    click("acceptButton");
    EXPECT_TRUE(becomes("Campus", "Connected"));
}

TEST_F(Panel, JoinsNetworksOfTheOtherSecurities) {
    startAndLookAround();
    for (const auto& [network, password] :
         {std::pair{"Cellar", "abcde"}, {"Vault", "nothing but sae"}, {"Attic", "battery staple"}}) {
        SCOPED_TRACE(network);
        join(network, password);
        EXPECT_TRUE(becomes(network, "Connected"));
    }
}

TEST_F(Panel, ForgetsANetworkAfterAQuestion) {
    startAndLookAround();
    join("Home", "correct horse");
    ASSERT_TRUE(becomes("Home", "Connected"));
    choose("Home");
    click("forgetButton");
    ASSERT_TRUE(soon([this] { return textOf("acceptButton") == "Forget"; }));
    keepPicture("forget");
    click("acceptButton");
    EXPECT_TRUE(becomes("Home", "WPA2"));
    EXPECT_FALSE(shows("problem"));
}

TEST_F(Panel, LeavesANetworkAndJoinsItAgainWithoutItsPassword) {
    startAndLookAround();
    join("Home", "correct horse");
    ASSERT_TRUE(becomes("Home", "Connected"));
    choose("Home");
    click("acceptButton");
    ASSERT_TRUE(becomes("Home", "WPA2 · Saved"));
    choose("Home");
    ASSERT_TRUE(soon([this] { return textOf("acceptButton") == "Join"; }));
    click("acceptButton");
    EXPECT_TRUE(becomes("Home", "Connected"));
}

TEST_F(Panel, SwitchesOffAndOn) {
    startAndLookAround();
    click("onSwitch");
    EXPECT_TRUE(soon([this] { return textOf("placeholder") == "Wi-Fi is off"; }));
    EXPECT_TRUE(soon([this] { return device().unitState().starts_with("inactive"); }));
    keepPicture("off");
    click("onSwitch");
    EXPECT_TRUE(soon([this] { return list() == allAround; }));
    EXPECT_FALSE(shows("placeholder"));
}

TEST_F(Panel, SaysThatWifiDoesNotStartAndTriesAgain) {
    startAndLookAround();
    click("onSwitch");
    ASSERT_TRUE(soon([this] { return device().unitState().starts_with("inactive"); }));
    sim::Fault refusal;
    refusal.member = "StartUnit";
    refusal.nth = 1;
    const auto refused = device().orderFault(refusal);
    click("onSwitch");
    ASSERT_TRUE(soon([&] { return device().timesFired(refused) == 1; }));
    EXPECT_EQ(textOf("placeholder"), "Wi-Fi is starting");
    EXPECT_FALSE(shows("startButton"));
    window().findChild<QObject*>("patience")->setProperty("interval", 1);
    EXPECT_TRUE(soon([this] { return textOf("placeholder") == "Wi-Fi does not start"; }));
    EXPECT_EQ(clippedTexts(), QStringList());
    keepPicture("does-not-start");
    click("startButton");
    EXPECT_TRUE(soon([this] { return list() == allAround; }));
    EXPECT_FALSE(shows("placeholder"));
}

TEST_F(Panel, IsUsedByTheKeyboardAlone) {
    startAndLookAround();
    item("onSwitch")->forceActiveFocus(Qt::TabFocusReason);
    key(Qt::Key_Tab);
    EXPECT_TRUE(isFocused("scanButton"));
    key(Qt::Key_Tab);
    EXPECT_TRUE(isFocused("list"));
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    ASSERT_TRUE(soon([this] { return isFocused("passwordField"); }));
    EXPECT_EQ(panel().form()->name(), "Björk & Søn");
    key(Qt::Key_Escape);
    EXPECT_TRUE(soon([this] { return isFocused("list") && !shows("passwordField"); }));
    key(Qt::Key_Tab);
    EXPECT_TRUE(isFocused("hiddenButton"));
}

TEST_F(Panel, OffersTargetsThatAFingerCanHit) {
    startAndLookAround();
    choose("Home");
    ASSERT_TRUE(soon([this] { return isFocused("passwordField"); }));
    for (const char* name : {"onSwitch", "themeButton", "scanButton", "row:Home", "hiddenButton",
                             "passwordField", "passwordFieldReveal", "cancelButton", "acceptButton"}) {
        ASSERT_TRUE(shows(name)) << name;
        EXPECT_GE(item(name)->height(), 48) << name;
        EXPECT_GE(item(name)->width(), 48) << name;
    }
}

TEST_F(Panel, ElidesALongNameAndKeepsInsideTheWindow) {
    auto around = home();
    around.accessPoints[0].ssid = "WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW";
    start(around, "light", {360, 480});
    const QString row = "row:WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW";
    ASSERT_TRUE(soon([&] { return shows(row); }));
    EXPECT_LE(item(row)->mapToScene({item(row)->width(), 0}).x(), 360);
    EXPECT_EQ(textOf("name", "truncated"), "true");
}

TEST_F(Panel, LooksAroundWhenItOpensAndWhenTheListIsPulledDown) {
    startAndLookAround();
    EXPECT_GE(scans(), 1);
    const int before = scans();
    dragDown("list", 300);
    EXPECT_TRUE(soon([&] { return scans() > before; }));
}

TEST_F(Panel, HearsOfNothingOnceItHasEnded) {
    start();
    for (int round = 0; round < 10; ++round) {
        auto other = std::make_unique<WifiPanel>();
        int changes = 0;
        QObject::connect(other.get(), &WifiPanel::changed, [&changes] { ++changes; });
        device().storm(50);
        EXPECT_TRUE(soon([&] { return changes > 0; }));
        device().storm(50);
        other.reset();
        const int heard = changes;
        QCoreApplication::processEvents();
        EXPECT_EQ(changes, heard);
    }
}

TEST_F(Panel, FollowsTheColoursOfTheSystem) {
    const QPalette before = QGuiApplication::palette();
    for (const QColor& ground : {QColor(Qt::black), QColor(Qt::white)}) {
        QPalette palette = before;
        palette.setColor(QPalette::Window, ground);
        QGuiApplication::setPalette(palette);
        start(home(), "system");
        EXPECT_TRUE(soon([&] { return isDark() == (ground == QColor(Qt::black)); }))
            << ground.name().toStdString();
        stop();
    }
    QGuiApplication::setPalette(before);
}

class PanelOfSize : public Panel, public ::testing::WithParamInterface<QSize> {};

TEST_P(PanelOfSize, ClipsNoText) {
    startAndLookAround("light", GetParam());
    EXPECT_EQ(clippedTexts(), QStringList());
    choose("Campus");
    ASSERT_TRUE(soon([this] { return isFocused("identityField"); }));
    EXPECT_EQ(clippedTexts(), QStringList());
    key(Qt::Key_Escape);
    join("Home", "not that horse");
    ASSERT_TRUE(soon([this] { return shows("problem"); }));
    EXPECT_EQ(clippedTexts(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, PanelOfSize, ::testing::Values(QSize(480, 800), QSize(800, 480), QSize(360, 640)),
    [](const auto& parameter) {
        return QString("%1x%2").arg(parameter.param.width()).arg(parameter.param.height()).toStdString();
    });

struct Look {
    const char* name;
    const char* theme;
    QSize size;
};

void PrintTo(const Look& look, std::ostream* out) {
    *out << look.name;
}

class PanelLook : public Panel, public ::testing::WithParamInterface<Look> {};

TEST_P(PanelLook, FollowsTheTheme) {
    const Look& look = GetParam();
    startAndLookAround(look.theme, look.size);
    EXPECT_EQ(isDark(), QString(look.theme) == "dark");
    join("Attic", "battery staple");
    ASSERT_TRUE(becomes("Attic", "Connected"));
    keepPicture(look.name);
    click("themeButton");
    EXPECT_EQ(isDark(), QString(look.theme) != "dark");
}

INSTANTIATE_TEST_SUITE_P(Looks, PanelLook,
                         ::testing::Values(Look{"list-light", "light", {480, 800}},
                                           Look{"list-dark", "dark", {480, 800}},
                                           Look{"list-landscape", "dark", {800, 480}}),
                         [](const auto& parameter) {
                             return QString(parameter.param.name).replace('-', '_').toStdString();
                         });

}  // namespace
}  // namespace kaz::test
