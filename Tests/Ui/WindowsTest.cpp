#include "ReviewSuite.h"

#include <QLocale>
#include <QScreen>

using namespace corv::test;

/// Windows and messages beside the main window: where they are, what is in front, what they keep.
class WindowsTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void staysInFrontOfTheMainWindow_data();
    void staysInFrontOfTheMainWindow();
    void comesUpOverTheMiddle_data();
    void comesUpOverTheMiddle();
    void thePictureIsInViewWhileAPointIsDescribed();
    void aClosedOneGivesBackWhatItWasDrawnWith();
    void theNewestMessageLiesOnTop();
    void aMessageShowsItsTextAsItIs();
    void framesExportKeepsWhatWasEntered();
    void framesExportReadsDigitsOfTheLocale();
    void aTypedNameReplacesTheNewOne();
    void aTypedNumberReplacesTheOldOne();
    void nothingIsChosenInTwoWindows_data();
    void nothingIsChosenInTwoWindows();
    void aboutClosesOnEscape();
    void filesWithoutAViewerAreNamed_data();
    void filesWithoutAViewerAreNamed();

private:
    QQuickWindow* opened(const QString& menuItem, const QString& name);
    void typeInto(QQuickWindow* window, const QString& text)
    {
        for (const QChar character : text)
            QTest::keyClick(window, character.toLatin1());
    }
};

QQuickWindow* WindowsTest::opened(const QString& menuItem, const QString& name)
{
    if (!m_ui->trigger(menuItem))
        return nullptr;
    QQuickWindow* window = nullptr;
    const bool shown = QTest::qWaitFor([&] {
        window = UiFixture::visibleWindow(name);
        return window != nullptr;
    });
    return shown && QTest::qWaitForWindowActive(window) ? window : nullptr;
}

void WindowsTest::staysInFrontOfTheMainWindow_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("exportFramesMenuItem") << "framesExport";
    QTest::newRow("restorePoisMenuItem") << "restorePoiChoice";
    QTest::newRow("generalSettingsMenuItem") << "generalSettings";
    QTest::newRow("shortcutsMenuItem") << "shortcutsWindow";
}

void WindowsTest::staysInFrontOfTheMainWindow()
{
    QFETCH(QString, name);
    QVERIFY(m_ui->openVideo());
    QQuickWindow* window = opened(QString::fromLatin1(QTest::currentDataTag()), name);
    QVERIFY(window);
    QCOMPARE(window->transientParent(), m_ui->window());
    // Beside the picture: right of its middle.
    const QQuickItem* picture = m_ui->item("videoRect");
    const QPoint middle = m_ui->window()->mapToGlobal(QPoint(qRound(picture->width() / 2), 200));
    QTRY_VERIFY(window->x() > middle.x());
    QVERIFY(window->geometry().right() <= window->screen()->geometry().right());
    // Over the main window, also once that has been clicked.
    window->setPosition(m_ui->window()->position() + QPoint(100, 100));
    const QPoint covered = window->position() + QPoint(150, 60);
    QTRY_COMPARE(QGuiApplication::topLevelAt(window->position() + QPoint(150, 60)), window);
    QVERIFY(m_ui->activate());
    m_ui->window()->raise();
    QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 120));
    // The window manager serves one wish after the other: once this one is served, so is the raise.
    const int lower = m_ui->window()->height() - 10;
    m_ui->window()->resize(m_ui->window()->width(), lower);
    QTRY_COMPARE(m_ui->window()->height(), lower);
    QCOMPARE(QGuiApplication::topLevelAt(covered), window);
}

void WindowsTest::comesUpOverTheMiddle_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("aboutMenuItem") << "aboutWindow";
    QTest::newRow("newFromDevicesMenuItem") << "autoImporter";
    QTest::newRow("exportVideoMenuItem") << "videoExport";
}

void WindowsTest::comesUpOverTheMiddle()
{
    QFETCH(QString, name);
    QVERIFY(m_ui->openVideo());
    QQuickWindow* window = opened(QString::fromLatin1(QTest::currentDataTag()), name);
    QVERIFY(window);
    const auto distance = [&] {
        return window->geometry().center() - m_ui->window()->geometry().center();
    };
    QTRY_VERIFY2(distance().manhattanLength() <= 40, qPrintable(name));
    window->close();
}

void WindowsTest::thePictureIsInViewWhileAPointIsDescribed()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(2000));
    m_ui->call("editSelectedPoi");
    QTRY_VERIFY(UiFixture::visibleWindow("poiPropertiesWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("poiPropertiesWindow");
    const QQuickItem* picture = m_ui->item("videoRect");
    const QPoint middle = m_ui->window()->mapToGlobal(QPoint(qRound(picture->width() / 2), 200));
    QTRY_VERIFY(window->x() > middle.x());
    window->close();
}

void WindowsTest::aClosedOneGivesBackWhatItWasDrawnWith()
{
    QQuickWindow* window = opened("generalSettingsMenuItem", "generalSettings");
    QVERIFY(window);
    QTRY_VERIFY(window->isSceneGraphInitialized());
    window->close();
    QTRY_VERIFY(!window->isSceneGraphInitialized());
    // The main one is drawn on.
    QVERIFY(m_ui->window()->isSceneGraphInitialized());
}

void WindowsTest::theNewestMessageLiesOnTop()
{
    m_ui->call("displayErrorDialog", {"First", "the older one"});
    QTRY_VERIFY(UiFixture::messageBox());
    QWidget* older = UiFixture::messageBox();
    m_ui->call("displayWarningDialog", {"Second", "the newer one"});
    QTRY_VERIFY(UiFixture::messageBox() && UiFixture::messageBox() != older);
    QWidget* newer = UiFixture::messageBox();
    newer->move(older->pos());
    const auto onTop = [newer] {
        QWindow* window = QGuiApplication::topLevelAt(newer->frameGeometry().center());
        return window == newer->windowHandle();
    };
    QTRY_VERIFY(onTop());
    older->raise();
    older->activateWindow();
    QTRY_VERIFY(onTop());
    QVERIFY(UiFixture::dismissMessageBox());
    QVERIFY(UiFixture::dismissMessageBox());
}

void WindowsTest::aMessageShowsItsTextAsItIs()
{
    m_ui->call("displayErrorDialog", {"Error", "<img src='/dev/zero'> & <b>name</b>"});
    QTRY_VERIFY(UiFixture::messageBox());
    QMessageBox* box = UiFixture::messageBox();
    QCOMPARE(box->textFormat(), Qt::PlainText);
    // Dark, like the windows.
    QVERIFY(box->palette().color(QPalette::Window).lightness() < 100);
    QVERIFY(box->palette().color(QPalette::WindowText).lightness() > 200);
    QVERIFY(UiFixture::dismissMessageBox());
}

void WindowsTest::framesExportKeepsWhatWasEntered()
{
    QVERIFY(m_ui->openVideo());
    QQuickWindow* window = opened("exportFramesMenuItem", "framesExport");
    QVERIFY(window);
    const QUrl folder = QUrl::fromLocalFile(FlightMedia::instance().newFolder());
    m_ui->find("startTextInput", window)->setProperty("text", "00:01.000");
    m_ui->find("stopTextInput", window)->setProperty("text", "00:02.500");
    m_ui->find("spacingTextInput", window)->setProperty("text", "25");
    window->setProperty("framesUrl", folder);
    // Closes without exporting.
    QTest::keyClick(window, Qt::Key_Return);
    QTRY_VERIFY(!window->isVisible());
    window = opened("exportFramesMenuItem", "framesExport");
    QVERIFY(window);
    QCOMPARE(m_ui->find("startTextInput", window)->property("text").toString(),
             QString("00:01.000"));
    QCOMPARE(m_ui->find("stopTextInput", window)->property("text").toString(),
             QString("00:02.500"));
    QCOMPARE(m_ui->find("spacingTextInput", window)->property("text").toString(), QString("25"));
    QCOMPARE(window->property("framesUrl").toUrl(), folder);
    QCOMPARE(m_ui->find("folderTextInput", window)->property("text").toString(), folder.toString());
    window->close();
    // Another flight has another range.
    m_ui->call("goCloseProject");
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("secondaryWindows.framesEntered.video = 'another.mp4'");
    window = opened("exportFramesMenuItem", "framesExport");
    QVERIFY(window);
    QCOMPARE(m_ui->find("startTextInput", window)->property("text").toString(),
             QString("00:00.000"));
}

void WindowsTest::framesExportReadsDigitsOfTheLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QStringLiteral("ar_EG")));
    const auto restoreLocale = qScopeGuard([&before] { QLocale::setDefault(before); });
    QVERIFY(m_ui->openVideo());
    QQuickWindow* window = opened("exportFramesMenuItem", "framesExport");
    QVERIFY(window);
    QTRY_COMPARE(m_ui->find("stopTextInput", window)->property("text").toString(),
                 QString("00:06.000"));
    m_ui->find("startTextInput", window)->setProperty("text", QString::fromUtf8("٠٠:٠١.٥٠٠"));
    window->setProperty("framesUrl", QUrl::fromLocalFile(FlightMedia::instance().newFolder()));
    QVERIFY(QMetaObject::invokeMethod(m_ui->find("okButton", window), "clicked"));
    QTRY_VERIFY(!window->isVisible());
    QCOMPARE(window->property("startTime").toInt(), 1500);
    QCOMPARE(window->property("ok").toBool(), true);
}

void WindowsTest::aTypedNameReplacesTheNewOne()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(2000));
    m_ui->call("editSelectedPoi");
    QTRY_VERIFY(UiFixture::visibleWindow("poiPropertiesWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("poiPropertiesWindow");
    QVERIFY(QTest::qWaitForWindowActive(window));
    QTRY_VERIFY(m_ui->item("tfName", window)->property("activeFocus").toBool());
    typeInto(window, "rust");
    QCOMPARE(m_ui->find("tfName", window)->property("text").toString(), QString("rust"));
    window->close();
}

void WindowsTest::aTypedNumberReplacesTheOldOne()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("LogParser.flightNaming = {missionName: 'm', flightName: 'f', flightNumber: 3, "
                   "undefined: false}");
    m_ui->call("editFlightProperties");
    QTRY_VERIFY(UiFixture::visibleWindow("flightPropertiesWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("flightPropertiesWindow");
    QVERIFY(QTest::qWaitForWindowActive(window));
    UiFixture::click(m_ui->item("tfFlightNumber", window));
    typeInto(window, "999");
    QCOMPARE(m_ui->find("tfFlightNumber", window)->property("text").toString(), QString("999"));
    window->close();
}

void WindowsTest::nothingIsChosenInTwoWindows_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("name");
    QTest::newRow("point of interest") << "editSelectedPoi()"
                                       << "poiPropertiesWindow";
    QTest::newRow("flight") << "editFlightProperties()"
                            << "flightPropertiesWindow";
    QTest::newRow("settings") << "goSettings()"
                              << "generalSettings";
    QTest::newRow("pictures") << "secondaryWindows.openFramesExport()"
                              << "framesExport";
}

// The menu opens a window that is open already, and a screen reader presses the buttons of the main
// window also while a dialog lies in front of it.
void WindowsTest::nothingIsChosenInTwoWindows()
{
    QFETCH(QString, script);
    QFETCH(QString, name);
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(2000));
    m_ui->evaluate("LogParser.flightNaming = {missionName: 'm', flightName: 'f', flightNumber: 3, "
                   "undefined: false}");
    m_ui->evaluate(script);
    QTRY_VERIFY(UiFixture::visibleWindow(name));
    QQuickWindow* window = UiFixture::visibleWindow(name);
    m_ui->evaluate(script);
    window->close();
    QVERIFY(!UiFixture::visibleWindow(name));
    m_ui->evaluate(script);
    QTRY_VERIFY(UiFixture::visibleWindow(name));
    UiFixture::visibleWindow(name)->close();
}

void WindowsTest::aboutClosesOnEscape()
{
    QQuickWindow* window = opened("aboutMenuItem", "aboutWindow");
    QVERIFY(window);
    // The window manager may still be handing over the keyboard.
    const auto closes = [window] {
        QTest::keyClick(window, Qt::Key_Escape);
        return !window->isVisible();
    };
    QTRY_VERIFY(closes());
}

void WindowsTest::filesWithoutAViewerAreNamed_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << "goOpenHelp"
                          << "User guide"
                          << "No program opens the user guide here. It is in the file\n\n" +
                                 QCoreApplication::applicationDirPath() + "/manual.pdf";
    QTest::newRow("crash") << "showCrashReport"
                           << "Crash report"
                           << "No program opens the report here. It is in the file\n\n"
                              "/tmp/a folder/Vistrel-crash-1.txt";
}

void WindowsTest::filesWithoutAViewerAreNamed()
{
    QFETCH(QString, call);
    QFETCH(QString, title);
    QFETCH(QString, text);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    const auto restorePath = qScopeGuard([&path] { qputenv("PATH", path); });
    for (const char* name : {"BROWSER", "DEFAULT_BROWSER"})
        qunsetenv(name);
    m_ui->root()->setProperty("crashReportPath", "/tmp/a folder/Vistrel-crash-1.txt");
    m_ui->call(qPrintable(call));
    expectBox(title, text, QMessageBox::Warning);
}

QTEST_MAIN(WindowsTest)
#include "WindowsTest.moc"
