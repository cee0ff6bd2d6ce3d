#include "ReviewFixture.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>

using namespace corv::test;

/// The words and pictures of the windows: labels, captions, tool tips.
class WordingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { UiFixture::prepare(); }
    void mainWindowHasItsWords_data();
    void mainWindowHasItsWords();
    void secondaryWindowsHaveTheirWords_data();
    void secondaryWindowsHaveTheirWords();
    void menusHaveTheirTitles();

private:
    static void collect(const QQuickItem* from, QSet<QString>& found);
    void compare(QQuickWindow* window, const QStringList& expected);
};

void WordingTest::collect(const QQuickItem* from, QSet<QString>& found)
{
    for (const char* name : {"text", "title", "tooltiptext", "inputMask"})
        found.insert(from->property(name).toString());
    const QString source = from->property("source").toString();
    found.insert(source.mid(source.indexOf("images/")));
    for (const QQuickItem* child : from->childItems())
        collect(child, found);
}

void WordingTest::compare(QQuickWindow* window, const QStringList& expected)
{
    QVERIFY(window);
    QSet<QString> found;
    collect(window->contentItem(), found);
    for (const QString& words : expected)
        QVERIFY2(found.contains(words), qPrintable("missing: " + words));
}

void WordingTest::mainWindowHasItsWords_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("welcome") << QStringList{
        "QUICK START MENU", "Open an existing project", "Create a new project from a video",
        "List all flights from removable devices or directories. Video and log files are "
        "automatically associated for easier review",
        "images/vistitle.png"};
    QTest::newRow("transport") << QStringList{"Speed",           "images/begin.png",
                                              "images/prev.png", "images/play.png",
                                              "images/next.png", "images/end.png"};
    QTest::newRow("tools") << QStringList{"Save current frame as image",
                                          "Copy current frame to clipboard",
                                          "Create POI at playhead position",
                                          "Delete selected POI",
                                          "Edit selected POI",
                                          "Move selected POI",
                                          "images/button_camera.png",
                                          "images/button_copy.png",
                                          "images/button_poi_add.png",
                                          "images/button_poi_remove.png",
                                          "images/button_poi_edit.png",
                                          "images/button_poi_move.png"};
    QTest::newRow("move mode") << QStringList{"POI MOVE MODE", "Move here", "Cancel",
                                              "images/icon_check_ok.png",
                                              "images/icon_cross_cancel.png"};
    QTest::newRow("status line") << QStringList{
        "Loading logs...", "Video file",         "No video file opened",
        "Log file",        "No log file opened", "images/loading_spinner.svg"};
    QTest::newRow("flight data") << QStringList{"Flight name not defined", "Edit flight properties",
                                                "images/button_edit_field.png"};
    QTest::newRow("adjustments") << QStringList{"Thermal camera display",
                                                "Show thermal",
                                                "Color mapping",
                                                "Lock",
                                                "Thermal camera position correction",
                                                "Log time shifting correction",
                                                "Image",
                                                "images/button_show_ir.png",
                                                "images/button_ir_fullscreen.png",
                                                "images/button_transparency.png",
                                                "images/slider_pointer_down.png",
                                                "images/slider_pointer_up.png",
                                                "images/button_auto.png",
                                                "images/button_lock_levels.png",
                                                "images/icon_horizontal_pos.png",
                                                "images/icon_vertical_pos.png",
                                                "images/icon_time_offset.png",
                                                "images/icon_contrast.png",
                                                "images/icon_brightness.png",
                                                "images/button_icon_reset_defaults.png"};
}

void WordingTest::mainWindowHasItsWords()
{
    QFETCH(QStringList, words);
    ReviewFixture ui;
    QVERIFY(ui.load());
    ui.evaluate("tabsContainer.currentIndex = 1");
    compare(ui.window(), words);
}

void WordingTest::secondaryWindowsHaveTheirWords_data()
{
    QTest::addColumn<QString>("opener");
    QTest::addColumn<QString>("window");
    QTest::addColumn<QStringList>("words");
    QTest::newRow("importer") << "openImporter()"
                              << "autoImporter"
                              << QStringList{"Flight files search locations",
                                             "Autodetect removable devices",
                                             "Log files location",
                                             "Video files location",
                                             "Browse...",
                                             "Search flights",
                                             "Fast search (ignores metadata)",
                                             "Paired files",
                                             "Time",
                                             "Mission name",
                                             "Flight name",
                                             "Num.",
                                             "Matching in progress...",
                                             "Abort",
                                             "Cancel",
                                             "Load selected"};
    QTest::newRow("frames") << "openFramesExport()"
                            << "framesExport"
                            << QStringList{"Frames range",
                                           "Points of interest (0)",
                                           "Start time (min:sec.ms):",
                                           "Stop time (min:sec.ms):",
                                           "Current position",
                                           "00:00.000",
                                           "99:99.999;_",
                                           "Save an image every...",
                                           "10",
                                           "00;_",
                                           "frames",
                                           "Export images to folder:",
                                           "Browse...",
                                           "Show the flight instruments in a corner",
                                           "Show the thermal colour bar in a corner",
                                           "Cancel",
                                           "Export images"};
    QTest::newRow("video")
        << "openVideoExport()"
        << "videoExport"
        << QStringList{"Video file to export:",
                       "Browse...",
                       "Show the flight instruments in a corner",
                       "Show the thermal colour bar in a corner",
                       "Video will be rendered with the same apparance as on the player. "
                       "This includes thermal camera overlay visibility and adjustments, "
                       "image brightness and contrast.\n",
                       "Cancel",
                       "Ok"};
    QTest::newRow("settings") << "openSettings()"
                              << "generalSettings"
                              << QStringList{"Unit system", "Metric", "Imperial",
                                             "Changes will be applied after restarting Vistrel"};
    QTest::newRow("flight properties")
        << "openFlightProperties()"
        << "flightPropertiesWindow"
        << QStringList{"Mission name", "Flight name", "Flight number", "Cancel", "Save"};
    QTest::newRow("about") << "openPlain('AboutWindow.qml')"
                           << "aboutWindow" << QStringList{"images/splash_logo.png", "Close"};
}

void WordingTest::secondaryWindowsHaveTheirWords()
{
    QFETCH(QString, opener);
    QFETCH(QString, window);
    QFETCH(QStringList, words);
    ReviewFixture ui;
    QVERIFY(ui.load());
    ui.evaluate("secondaryWindows." + opener);
    QTRY_VERIFY(UiFixture::visibleWindow(window));
    compare(UiFixture::visibleWindow(window), words);
}

void WordingTest::menusHaveTheirTitles()
{
    ReviewFixture ui;
    QVERIFY(ui.load());
    QCOMPARE(ui.get("fileMenu", "title").toString(), QString("&File"));
    QCOMPARE(ui.get("newProjectMenu", "title").toString(), QString("&New project"));
    QCOMPARE(ui.get("reviewMenu", "title").toString(), QString("&Review"));
    QCOMPARE(ui.get("exportMenu", "title").toString(), QString("&Export"));
    QCOMPARE(ui.get("settingsMenu", "title").toString(), QString("&Settings"));
    QCOMPARE(ui.get("helpMenu", "title").toString(), QString("&Help"));
}

QTEST_MAIN(WordingTest)
#include "WordingTest.moc"
