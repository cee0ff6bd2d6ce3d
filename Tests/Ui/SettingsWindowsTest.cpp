#include "DialogSuite.h"

#include "Shell/AppInfo.h"

#include <QAccessible>
#include <QApplication>
#include <QPalette>
#include <QSettings>
#include <QSignalSpy>

using namespace corv::test;

namespace {

const QList<WindowLook> windows{
    // The lowest height of the settings is above the one they ask for.
    {"settings", "GeneralSettings.qml", "Settings", QSize(400, 244), QSize(400, 244), "#555555"},
    {"shortcuts", "ShortcutsWindow.qml", "Keyboard Shortcuts", QSize(300, 420), QSize(300, 420),
     "#555555"},
    {"about", "AboutWindow.qml", "About Vistrel", QSize(700, 600), QSize(400, 400), "",
     Qt::WindowModal},
    {"update", "NewUpdateWindow.qml", "Update now", QSize(400, 700), QSize(400, 600), "#494949",
     Qt::ApplicationModal},
};

} // namespace

/// The secondary windows: their texts, keys and what they leave behind.
class SettingsWindowsTest : public DialogSuite
{
    Q_OBJECT

public:
    SettingsWindowsTest() : DialogSuite(windows) {}

private slots:
    void settingsShowWhatIsStored_data();
    void settingsShowWhatIsStored();
    void choicesAreReadOutWithTheirHeading_data();
    void choicesAreReadOutWithTheirHeading();
    void settingsAreSaved_data();
    void settingsAreSaved();
    void thermalClockIsShownAndSaved();
    void theLookChangesAtOnceAndIsKept();
    void cancellingSettingsChangesNothing_data();
    void cancellingSettingsChangesNothing();
    void numbersArePadded_data();
    void numbersArePadded();

    void shortcutsAreListed();
    void shortcutsClose_data();
    void shortcutsClose();

    void aboutShowsTheVersionAndTheLicences();
    void aboutScrollsAndCloses();

    void updateShowsWhatIsNew_data();
    void updateShowsWhatIsNew();
    void updateIsInstalled();
    void updateWaits();
};

void SettingsWindowsTest::settingsShowWhatIsStored_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("imperial");
    QTest::newRow("nothing stored") << QVariant() << false;
    QTest::newRow("metric") << QVariant(false) << false;
    QTest::newRow("imperial") << QVariant(true) << true;
}

void SettingsWindowsTest::settingsShowWhatIsStored()
{
    QFETCH(QVariant, stored);
    QFETCH(bool, imperial);
    if (stored.isValid())
        QSettings().setValue("userPreferences/imperialUnits", stored);
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->show());
    QCOMPARE(m_host->part("radioUnitImperial")->property("checked").toBool(), imperial);
    QCOMPARE(m_host->part("radioUnitMetric")->property("checked").toBool(), !imperial);
    QCOMPARE(m_host->textOf("radioUnitMetric"), QString("Metric"));
    QCOMPARE(m_host->textOf("radioUnitImperial"), QString("Imperial"));
    QCOMPARE(m_host->textOf("restartNotice"),
             QString("Changes will be applied after restarting Vistrel"));
    QCOMPARE(m_host->part("okButton")->property("caption").toString(), QString("Save settings"));
    QCOMPARE(m_host->part("cancelButton")->property("caption").toString(), QString("Cancel"));
}

void SettingsWindowsTest::choicesAreReadOutWithTheirHeading_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QString>("heading");
    QTest::newRow("metric") << "radioUnitMetric"
                            << "Unit system";
    QTest::newRow("imperial") << "radioUnitImperial"
                              << "Unit system";
    QTest::newRow("of the file") << "radioThermalOfFile"
                                 << "Thermal picture of saved frames";
    QTest::newRow("on screen") << "radioThermalOnScreen"
                               << "Thermal picture of saved frames";
    QTest::newRow("dark") << "radioLookDark"
                          << "Appearance";
    QTest::newRow("light") << "radioLookLight"
                           << "Appearance";
}

void SettingsWindowsTest::choicesAreReadOutWithTheirHeading()
{
    QFETCH(QString, choice);
    QFETCH(QString, heading);
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVERIFY(m_host->show());
    QAccessibleInterface* read = QAccessible::queryAccessibleInterface(m_host->part(choice));
    QCOMPARE(read->text(QAccessible::Description), heading);
}

void SettingsWindowsTest::settingsAreSaved_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<bool>("imperial");
    QTest::newRow("to imperial, clicked") << false << "radioUnitImperial" << false << true;
    QTest::newRow("to imperial, Return") << false << "radioUnitImperial" << true << true;
    QTest::newRow("to metric, clicked") << true << "radioUnitMetric" << false << false;
    QTest::newRow("as it was, Return") << true << "" << true << true;
}

void SettingsWindowsTest::settingsAreSaved()
{
    QFETCH(bool, stored);
    QFETCH(QString, choice);
    QFETCH(bool, byKey);
    QFETCH(bool, imperial);
    QSettings().setValue("userPreferences/imperialUnits", stored);
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->show());
    if (!choice.isEmpty())
        m_host->click(choice);
    accept(byKey, "okButton");
    QCOMPARE(m_host->get("imperialUnits").toBool(), imperial);
    QTRY_COMPARE(QSettings().value("userPreferences/imperialUnits").toBool(), imperial);
}

void SettingsWindowsTest::thermalClockIsShownAndSaved()
{
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->show());
    QVERIFY(m_host->part("radioThermalOfFile")->property("checked").toBool());
    m_host->click("radioThermalOnScreen");
    accept(false, "okButton");
    QVERIFY(m_host->get("thermalAsOnScreen").toBool());
    QTRY_VERIFY(QSettings().value("userPreferences/thermalAsOnScreen").toBool());
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->part("radioThermalOnScreen")->property("checked").toBool());
}

void SettingsWindowsTest::theLookChangesAtOnceAndIsKept()
{
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->show());
    QVERIFY(m_host->part("radioLookDark")->property("checked").toBool());
    m_host->click("radioLookLight");
    // Only "Save settings" changes anything.
    QCOMPARE(m_host->get("color").value<QColor>(), QColor("#555555"));
    accept(false, "okButton");
    QVERIFY(m_host->get("color").value<QColor>().lightness() > 200);
    QVERIFY(QApplication::palette().color(QPalette::Window).lightness() > 200);
    QCOMPARE(QSettings().value("userPreferences/lightTheme").toBool(), true);
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->part("radioLookLight")->property("checked").toBool());
    QVERIFY(m_host->show());
    m_host->click("radioLookDark");
    accept(false, "okButton");
    QCOMPARE(m_host->get("color").value<QColor>(), QColor("#555555"));
    QVERIFY(QApplication::palette().color(QPalette::Window).lightness() < 80);
}

void SettingsWindowsTest::cancellingSettingsChangesNothing_data()
{
    addRowsOfCancelling();
}

void SettingsWindowsTest::cancellingSettingsChangesNothing()
{
    QFETCH(bool, byKey);
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->show());
    m_host->click("radioUnitImperial");
    cancel(byKey, "cancelButton");
    QVERIFY(!m_host->get("imperialUnits").toBool());
    // Settings are written when their owner goes, at the latest.
    m_host.reset();
    QVERIFY(!QSettings().value("userPreferences/imperialUnits").toBool());
}

void SettingsWindowsTest::numbersArePadded_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("padded");
    QTest::newRow("shorter") << 7 << 3 << "007";
    QTest::newRow("as long") << 123 << 3 << "123";
    QTest::newRow("longer") << 1234 << 3 << "1234";
}

void SettingsWindowsTest::numbersArePadded()
{
    QFETCH(int, number);
    QFETCH(int, size);
    QVERIFY(m_host->make("GeneralSettings.qml"));
    QVariant padded;
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "pad", Q_RETURN_ARG(QVariant, padded),
                                      Q_ARG(QVariant, number), Q_ARG(QVariant, size)));
    QTEST(padded.toString(), "padded");
}

void SettingsWindowsTest::shortcutsAreListed()
{
    QVERIFY(m_host->open("ShortcutsWindow.qml"));
    const QString expected = R"(MENU:
Ctrl+N : Create new project from video
Ctrl+Shift+N : Create new project from SD / dir
Ctrl+L : Import flight log
Ctrl+O : Open project
Ctrl+S : Save project
Ctrl+Shift+S : Save project as...
Ctrl+W : Close current project
Ctrl+Q : Exit
Ctrl+C: Copy frame to clipboard

POINTS OF INTEREST:
N : Create POI
X : Delete selected POI
M : Move selected POI
E : Edit selected POI

VIDEO:
Left arrow: Previous frame
Right arrow: Next frame
F11: Full screen window)";
    QCOMPARE(m_host->textOf("text1"), expected);
    QCOMPARE(m_host->part("text1")->property("color").value<QColor>(), QColor(Qt::white));
    // All of it is seen.
    QQuickItem* text = m_host->item("text1");
    QVERIFY(text->property("contentHeight").toDouble() <= text->height());
    QVERIFY(text->property("contentWidth").toDouble() <= text->width());
}

void SettingsWindowsTest::shortcutsClose_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("clicked") << 0;
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void SettingsWindowsTest::shortcutsClose()
{
    QFETCH(int, key);
    QVERIFY(m_host->open("ShortcutsWindow.qml"));
    QCOMPARE(m_host->part("okButton")->property("caption").toString(), QString("Close"));
    if (key != 0)
        m_host->press(Qt::Key(key));
    else
        m_host->click("okButton");
    QTRY_VERIFY(!m_host->window()->isVisible());
}

void SettingsWindowsTest::aboutShowsTheVersionAndTheLicences()
{
    QVERIFY(m_host->open("AboutWindow.qml"));
    QCOMPARE(m_host->textOf("lbl_version"), "Version " + corv::AppInfo().versionString());
    const QString text = m_host->textOf("licensesText");
    int from = 0;
    for (const char* part :
         {"Vistrel authors", "end-user licence agreement", "Open source licenses",
          "This software uses components available under open source licenses, listed below.",
          ">OpenCV<", "Apache License", ">DocxFactory<", "Vistrel's own", ">Qt<",
          "Lesser General Public License", ">pugixml<", ">QuaZip<", ">FFmpeg<", ">zlib<"}) {
        const int at = text.indexOf(QLatin1String(part), from);
        QVERIFY2(at >= 0, part);
        from = at;
    }
    QTRY_COMPARE(m_host->part("splashLogo")->property("status").toInt(), 1); // Image.Ready
}

void SettingsWindowsTest::aboutScrollsAndCloses()
{
    QVERIFY(m_host->open("AboutWindow.qml"));
    QQuickItem* text = m_host->item("licensesText");
    const auto top = [&] { return text->mapToScene(QPointF(0, 0)).y(); };
    const double before = top();
    UiFixture::wheel(m_host->item("licensesView"), -120);
    QTRY_VERIFY(top() < before);
    m_host->screenshot("AboutWindow-scrolled");
    m_host->click("btn_close");
    QTRY_VERIFY(!m_host->window()->isVisible());
}

void SettingsWindowsTest::updateShowsWhatIsNew_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QVariantList>("notes");
    QTest::addColumn<QString>("text");
    const QString sentence = "The following new features have been implemented or bugs have been "
                             "fixed:\n\n";
    QTest::newRow("as it is made")
        << "" << QVariantList() << "New Vistrel version 1.0 available!\n\n" + sentence;
    QTest::newRow("no notes") << "1.6.0.1" << QVariantList()
                              << "New Vistrel version 1.6.0.1 available!\n\n" + sentence;
    QTest::newRow("two notes") << "2.0.0.0" << QVariantList{"Faster", "- Fixed <b>"}
                               << "New Vistrel version 2.0.0.0 available!\n\n" + sentence +
                                      "Faster\n- Fixed <b>";
}

void SettingsWindowsTest::updateShowsWhatIsNew()
{
    QFETCH(QString, version);
    QFETCH(QVariantList, notes);
    QVERIFY(m_host->make("NewUpdateWindow.qml"));
    if (!version.isEmpty()) {
        m_host->set("versionString", version);
        m_host->set("releaseNotes", notes);
    }
    QVERIFY(m_host->show());
    QTEST(m_host->textOf("lbl_version"), "text");
    QCOMPARE(m_host->textOf("btn_install_now"), QString("Install now"));
    QCOMPARE(m_host->textOf("btn_later"), QString("Later"));
    QTRY_COMPARE(m_host->part("image1")->property("status").toInt(), 1); // Image.Ready
    m_host->screenshot("NewUpdateWindow-notes");
}

void SettingsWindowsTest::updateIsInstalled()
{
    QVERIFY(m_host->make("NewUpdateWindow.qml"));
    m_host->set("versionString", "9.8.7.6");
    QVERIFY(m_host->show());
    QSignalSpy install(m_host->window(), SIGNAL(installNewVersion(QString)));
    m_host->click("btn_install_now");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QCOMPARE(install.count(), 1);
    QCOMPARE(install.at(0).at(0).toString(), QString("9.8.7.6"));
}

void SettingsWindowsTest::updateWaits()
{
    QVERIFY(m_host->open("NewUpdateWindow.qml"));
    QSignalSpy install(m_host->window(), SIGNAL(installNewVersion(QString)));
    m_host->click("btn_later");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QCOMPARE(install.count(), 0);
}

QTEST_MAIN(SettingsWindowsTest)
#include "SettingsWindowsTest.moc"
