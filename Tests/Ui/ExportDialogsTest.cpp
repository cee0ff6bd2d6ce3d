#include "DialogSuite.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTime>

using namespace corv::test;

namespace {

const QList<WindowLook> windows{
    {"frames", "FramesExport.qml", "Export frames", QSize(480, 360), QSize(480, 244), "#555555"},
    {"video", "VideoExport.qml", "Export video", QSize(600, 0), QSize(400, 113), "#555555",
     Qt::WindowModal},
};

} // namespace

/// The windows that export frames and videos: their texts, fields, refusals, keys and what they
/// hand back.
class ExportDialogsTest : public DialogSuite
{
    Q_OBJECT

public:
    ExportDialogsTest() : DialogSuite(windows) {}

private slots:
    void framesStartWithTheirDefaults();
    void framesFollowTheVideo();
    void framesOfPoisNeedPois();
    void framesFieldsCloseForPois();
    void framesFieldsLightTogether();
    void framesAreExportedForAValidRangeOnly_data();
    void framesAreExportedForAValidRangeOnly();
    void framesTimesLieWithinTheVideo_data();
    void framesTimesLieWithinTheVideo();
    void framesTabLeadsThroughTheFields();
    void framesTimeIsTyped();
    void framesFolderIsChosenAndRemembered();
    void cancellingFramesExportsNothing();
    void framesReturnClosesWithoutExport();
    void framesEscapeDoesNothing();
    void framesStayReachableInALowWindow();

    void videoExportWindowIsAsHighAsItsContents();
    void videoExportScrollsInALowWindow();
    void videoExportHasItsTexts();
    void videoExportTakesOnlyVideoSuffixes_data();
    void videoExportTakesOnlyVideoSuffixes();
    void videoFileIsChosenAndRemembered();
    void videoFileThatIsThereIsAskedAbout();
    void videoKeysDoNothing_data();
    void videoKeysDoNothing();
    void cancellingAVideoExportsNothing();

    void progressShowsAndAborts();

private:
    int scriptErrorsAbout(const QString& text) const;
};

int ExportDialogsTest::scriptErrorsAbout(const QString& text) const
{
    return m_host->ui().scriptErrors().filter(text).size();
}

void ExportDialogsTest::framesStartWithTheirDefaults()
{
    QVERIFY(m_host->make("FramesExport.qml"));
    QCOMPARE(m_host->get("framesUrl").toUrl(), QUrl());
    QCOMPARE(m_host->get("startTime").toInt(), 0);
    QCOMPARE(m_host->get("stopTime").toInt(), 0);
    QCOMPARE(m_host->get("frameSpacing").toInt(), 10);
    QVERIFY(!m_host->get("position").isValid());
    QVERIFY(!m_host->get("duration").isValid());
    QCOMPARE(m_host->get("poiCount").toInt(), 0);
    QCOMPARE(m_host->get("exportPOI").toBool(), false);
    QVERIFY(m_host->show());
    QCOMPARE(m_host->textOf("startTextInput"), QString("00:00.000"));
    QCOMPARE(m_host->textOf("spacingTextInput"), QString("10"));
    QVERIFY(m_host->part("radioExportFrames")->property("checked").toBool());
    QCOMPARE(m_host->textOf("radioExportFrames"), QString("Frames range"));
    QCOMPARE(m_host->textOf("browseButton"), QString("Browse..."));
    QCOMPARE(m_host->textOf("okButton"), QString("Export images"));
    QVERIFY(m_host->part("folderTextInput")->property("readOnly").toBool());
}

void ExportDialogsTest::framesFollowTheVideo()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    const auto passTime = [&](const char* function, const QTime& time) {
        QMetaObject::invokeMethod(m_host->object(), function,
                                  Q_ARG(QVariant, QVariant::fromValue(time)));
    };
    passTime("setDuration", QTime(0, 12, 34, 567));
    QCOMPARE(m_host->textOf("stopTextInput"), QString("12:34.567"));
    passTime("setDuration", QTime(0, 20, 0, 1));
    QCOMPARE(m_host->textOf("stopTextInput"), QString("20:00.001"));
    passTime("setPosition", QTime(0, 1, 2, 3));
    m_host->click("buttonSetCurrentPositionAsStart");
    QCOMPARE(m_host->textOf("startTextInput"), QString("01:02.003"));
    QCOMPARE(m_host->textOf("stopTextInput"), QString("20:00.001"));
    passTime("setPosition", QTime(0, 4, 5, 60));
    m_host->click("buttonSetCurrentPositionAsStop");
    QCOMPARE(m_host->textOf("startTextInput"), QString("01:02.003"));
    QCOMPARE(m_host->textOf("stopTextInput"), QString("04:05.060"));
}

void ExportDialogsTest::framesOfPoisNeedPois()
{
    QVERIFY(m_host->make("FramesExport.qml"));
    QVERIFY(m_host->show());
    QCOMPARE(m_host->textOf("radioExportPOIs"), QString("Points of interest (0)"));
    QVERIFY(!m_host->item("radioExportPOIs")->isEnabled());
    m_host->click("radioExportPOIs");
    QVERIFY(!m_host->part("radioExportPOIs")->property("checked").toBool());
    m_host->set("poiCount", 3);
    QCOMPARE(m_host->textOf("radioExportPOIs"), QString("Points of interest (3)"));
    m_host->click("radioExportPOIs");
    QVERIFY(m_host->part("radioExportPOIs")->property("checked").toBool());
    QVERIFY(!m_host->part("radioExportFrames")->property("checked").toBool());
}

void ExportDialogsTest::framesFieldsCloseForPois()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->set("poiCount", 1);
    const QStringList parts{"startTextInput", "stopTextInput", "spacingTextInput",
                            "buttonSetCurrentPositionAsStart", "buttonSetCurrentPositionAsStop"};
    for (const QString& name : parts)
        QVERIFY2(m_host->item(name)->isEnabled(), qPrintable(name));
    m_host->click("radioExportPOIs");
    for (const QString& name : parts)
        QVERIFY2(!m_host->item(name)->isEnabled(), qPrintable(name));
    QTRY_COMPARE(m_host->item("startTextInput")->parentItem()->property("color").value<QColor>(),
                 QColor("#888"));
    m_host->screenshot("FramesExport-pois");
}

// Only the pointer over the spacing lights a field, and it lights all three.
void ExportDialogsTest::framesFieldsLightTogether()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    const auto colour = [&](const char* name) {
        return m_host->item(name)->parentItem()->property("color").value<QColor>();
    };
    UiFixture::hover(m_host->item("startTextInput"));
    QTRY_COMPARE(colour("startTextInput"), QColor("#AAAAAA"));
    UiFixture::hover(m_host->item("spacingTextInput"));
    for (const char* name : {"startTextInput", "stopTextInput", "spacingTextInput"})
        QTRY_COMPARE(colour(name), QColor("#CCCCCC"));
    UiFixture::hover(m_host->item("stopTextInput"));
    for (const char* name : {"startTextInput", "stopTextInput", "spacingTextInput"})
        QTRY_COMPARE(colour(name), QColor("#AAAAAA"));
}

void ExportDialogsTest::framesAreExportedForAValidRangeOnly_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("stop");
    QTest::addColumn<QString>("spacing");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("pois");
    QTest::addColumn<QString>("refusal");
    QTest::addColumn<int>("startMs");
    QTest::addColumn<int>("stopMs");
    QTest::addColumn<int>("frames");

    const QString folder = "file:///tmp/frames";
    const QString wrongStart = "Invalid start time";
    const QString wrongStop = "Invalid stop time";
    QTest::newRow("a range") << "00:01.250"
                             << "12:59.999"
                             << "25" << folder << false << "" << 1250 << 779999 << 25;
    QTest::newRow("short parts are padded") << "1:5.7"
                                            << "2:6.78"
                                            << "5" << folder << false << "" << 65007 << 126078 << 5;
    QTest::newRow("empty parts are zero") << ":."
                                          << "1:."
                                          << "10" << folder << false << "" << 0 << 60000 << 10;
    QTest::newRow("equal times pass") << "00:07.000"
                                      << "00:07.000"
                                      << "10" << folder << false << "" << 7000 << 7000 << 10;
    QTest::newRow("minutes are not limited")
        << "99:00.000"
        << "99:59.000"
        << "10" << folder << false << "" << 5940000 << 5999000 << 10;
    QTest::newRow("points of interest") << "00:00.000"
                                        << "00:09.000"
                                        << "10" << folder << true << "" << 0 << 9000 << 10;
    QTest::newRow("start of 60 seconds") << "00:60.000"
                                         << "02:00.000"
                                         << "10" << folder << false << wrongStart << 0 << 0 << 0;
    QTest::newRow("stop of 99 seconds") << "00:00.000"
                                        << "00:99.000"
                                        << "10" << folder << false << wrongStop << 0 << 0 << 0;
    QTest::newRow("start comes before stop, spacing and folder")
        << "00:60.000"
        << "00:60.000"
        << "0"
        << "" << false << wrongStart << 0 << 0 << 0;
    QTest::newRow("stop comes before the folder") << "00:00.000"
                                                  << "00:60.000"
                                                  << "0"
                                                  << "" << false << wrongStop << 0 << 0 << 0;
    QTest::newRow("no folder") << "00:00.000"
                               << "00:01.000"
                               << "10"
                               << "" << false << "No folder selected" << 0 << 0 << 0;
    QTest::newRow("the folder comes before the order of times")
        << "00:02.000"
        << "00:01.000"
        << "0"
        << "" << false << "No folder selected" << 0 << 0 << 0;
    QTest::newRow("stop before start")
        << "00:02.000"
        << "00:01.999"
        << "0" << folder << false << "Stop time smaller than start time" << 0 << 0 << 0;
    for (const char* spacing : {"0", "00", ""})
        QTest::addRow("spacing \"%s\"", spacing)
            << "00:00.000"
            << "00:01.000" << spacing << folder << false
            << "Frames spacing must be a positive number" << 0 << 0 << 0;
    QTest::newRow("a hidden wrong time refuses points of interest")
        << "00:60.000"
        << "01:00.000"
        << "10" << folder << true << wrongStart << 0 << 0 << 0;
    QTest::newRow("a hidden order of times refuses points of interest")
        << "00:02.000"
        << "00:01.000"
        << "10" << folder << true << "Stop time smaller than start time" << 0 << 0 << 0;
    QTest::newRow("a hidden spacing refuses points of interest")
        << "00:00.000"
        << "00:01.000"
        << "0" << folder << true << "Frames spacing must be a positive number" << 0 << 0 << 0;
}

void ExportDialogsTest::framesAreExportedForAValidRangeOnly()
{
    QFETCH(QString, start);
    QFETCH(QString, stop);
    QFETCH(QString, spacing);
    QFETCH(QString, folder);
    QFETCH(bool, pois);
    QFETCH(QString, refusal);
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->set("poiCount", 2);
    m_host->set("framesUrl", QUrl(folder));
    m_host->setTextOf("startTextInput", start);
    m_host->setTextOf("stopTextInput", stop);
    m_host->setTextOf("spacingTextInput", spacing);
    if (pois)
        m_host->click("radioExportPOIs");
    m_host->click("okButton");

    if (refusal.isEmpty()) {
        QTRY_VERIFY(!m_host->window()->isVisible());
        QVERIFY(!UiFixture::messageBox());
        QTEST(m_host->get("startTime").toInt(), "startMs");
        QTEST(m_host->get("stopTime").toInt(), "stopMs");
        QTEST(m_host->get("frameSpacing").toInt(), "frames");
        QCOMPARE(m_host->get("exportPOI").toBool(), pois);
    } else {
        QTRY_VERIFY(UiFixture::messageBox());
        QCOMPARE(UiFixture::messageBox()->windowTitle(), QString("Warning"));
        QCOMPARE(m_host->dismissMessage(), refusal);
        QVERIFY(m_host->window()->isVisible());
    }
    QCOMPARE(m_host->get("ok").toBool(), refusal.isEmpty());
}

void ExportDialogsTest::framesTimesLieWithinTheVideo_data()
{
    QTest::addColumn<int>("startMs");
    QTest::addColumn<int>("stopMs");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("refusal");
    const QString folder = "file:///tmp/frames";
    const QString outside = "Start or stop time out of the video duration";
    QTest::newRow("start before the video") << -1 << 1000 << folder << outside;
    QTest::newRow("stop before the video") << 0 << -1 << folder << outside;
    QTest::newRow("it comes before the order of times") << -1 << -2 << folder << outside;
    QTest::newRow("the folder comes first") << -1 << -2 << ""
                                            << "No folder selected";
    QTest::newRow("the start itself") << 0 << 0 << folder << "";
    QTest::newRow("beyond the end") << 0 << 86000000 << folder << "";
}

// The fields take no sign; code that sets the times of the window can pass one.
void ExportDialogsTest::framesTimesLieWithinTheVideo()
{
    QFETCH(int, startMs);
    QFETCH(int, stopMs);
    QFETCH(QString, folder);
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->set("framesUrl", QUrl(folder));
    m_host->set("frameSpacing", 1);
    m_host->set("startTime", startMs);
    m_host->set("stopTime", stopMs);
    QVariant refusal;
    QVERIFY(QMetaObject::invokeMethod(m_host->window(), "checkValues",
                                      Q_RETURN_ARG(QVariant, refusal)));
    QTEST(refusal.toString(), "refusal");
}

void ExportDialogsTest::framesTabLeadsThroughTheFields()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    verifyTabOrder({"startTextInput", "buttonSetCurrentPositionAsStart", "stopTextInput",
                    "buttonSetCurrentPositionAsStop", "spacingTextInput", "folderTextInput"});
}

void ExportDialogsTest::framesTimeIsTyped()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->click("startTextInput");
    QVERIFY(m_host->item("startTextInput")->hasActiveFocus());
    m_host->press(Qt::Key_Home);
    for (const char digit : {'0', '3', 'x', '1', '4', '1', '5', '9'})
        QTest::keyClick(m_host->window(), digit);
    QCOMPARE(m_host->textOf("startTextInput"), QString("03:14.159"));
    m_host->press(Qt::Key_Home);
    m_host->press(Qt::Key_Delete);
    QCOMPARE(m_host->textOf("startTextInput"), QString("3:14.159"));
    m_host->press(Qt::Key_Tab);
    QVERIFY(!m_host->item("startTextInput")->hasActiveFocus());
    m_host->type("spacingTextInput", "4a2");
    QCOMPARE(m_host->textOf("spacingTextInput"), QString("42"));
}

void ExportDialogsTest::framesFolderIsChosenAndRemembered()
{
    QTemporaryDir parent;
    QVERIFY(parent.isValid());
    const QDir folder(parent.filePath(QString(90, 'f')));
    QVERIFY(folder.mkpath("."));
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->click("browseButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->windowTitle(), QString("Please choose a folder"));
    QVERIFY(UiFixture::acceptFile(folder.path()));
    const QUrl url = QUrl::fromLocalFile(folder.path());
    QTRY_COMPARE(m_host->get("framesUrl").toUrl(), url);
    QCOMPARE(m_host->textOf("folderTextInput"), url.toString());
    // The end of a long path distinguishes folders, so it is what shows.
    QQuickItem* field = m_host->item("folderTextInput");
    QRectF end;
    QVERIFY(QMetaObject::invokeMethod(field, "positionToRectangle", Q_RETURN_ARG(QRectF, end),
                                      Q_ARG(int, url.toString().size())));
    QVERIFY(field->property("contentWidth").toDouble() > field->width());
    QVERIFY2(end.right() <= field->width() + 1, qPrintable(QString::number(end.right())));
    m_host->click("cancelButton");
    QTRY_COMPARE(
        QSettings().value("framesExport/folder").toUrl().adjusted(QUrl::StripTrailingSlash), url);

    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->click("browseButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->directory().absolutePath(), folder.path());
    UiFixture::fileDialog()->reject();
    QCOMPARE(m_host->get("framesUrl").toUrl(), QUrl());
    m_host->click("cancelButton");
    QTRY_VERIFY(!m_host->window()->isVisible());
    // Also after a new start, when the dialogs of the system were last in another folder.
    QVERIFY(folder.mkpath("below"));
    const QString below = folder.filePath("below");
    QSettings().setValue("framesExport/folder", QUrl::fromLocalFile(below));
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->click("browseButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QTRY_COMPARE(UiFixture::fileDialog()->directory().absolutePath(), below);
    UiFixture::fileDialog()->reject();
}

void ExportDialogsTest::cancellingFramesExportsNothing()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->click("cancelButton");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QVERIFY(!m_host->get("ok").toBool());
}

void ExportDialogsTest::framesReturnClosesWithoutExport()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->set("framesUrl", QUrl("file:///tmp"));
    m_host->press(Qt::Key_Return);
    QTRY_VERIFY(!m_host->window()->isVisible());
    QVERIFY(!m_host->get("ok").toBool());
    QCOMPARE(m_host->ui().scriptErrors(), QStringList());
}

void ExportDialogsTest::framesEscapeDoesNothing()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->press(Qt::Key_Escape);
    QTRY_COMPARE(scriptErrorsAbout("pressButton"), 1);
    QVERIFY(m_host->window()->isVisible());
    // A window that is closed listens no more.
    m_host->click("cancelButton");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QTest::keyClick(m_host->ui().window(), Qt::Key_Escape);
    QCOMPARE(scriptErrorsAbout("pressButton"), 1);
}

void ExportDialogsTest::framesStayReachableInALowWindow()
{
    QVERIFY(m_host->open("FramesExport.qml"));
    m_host->window()->resize(480, 244);
    QTRY_COMPARE(m_host->window()->height(), 244);
    QQuickItem* browse = m_host->item("browseButton");
    QQuickItem* ok = m_host->item("okButton");
    const auto top = [](QQuickItem* item) { return item->mapToScene(QPointF(0, 0)).y(); };
    QTRY_VERIFY(top(ok) + ok->height() <= 244);
    QVERIFY(top(browse) + browse->height() > top(ok));
    for (int i = 0; i < 10; ++i)
        UiFixture::wheel(m_host->item("startTextInput")->parentItem(), -120);
    QTRY_VERIFY(top(browse) + browse->height() <= top(ok));
    m_host->screenshot("FramesExport-low");
}

void ExportDialogsTest::videoExportWindowIsAsHighAsItsContents()
{
    QVERIFY(m_host->open("VideoExport.qml"));
    const qreal contents = m_host->item("note")->parentItem()->height();
    const int margin = 30;
    QTRY_COMPARE(m_host->window()->height(),
                 qRound(contents + m_host->item("cancelButton")->height()) + margin);
}

void ExportDialogsTest::videoExportScrollsInALowWindow()
{
    QVERIFY(m_host->open("VideoExport.qml"));
    QQuickItem* page = m_host->window()->contentItem();
    // The window takes the height that its texts need at a width.
    m_host->window()->setWidth(400);
    QTRY_COMPARE(page->width(), 400.0);
    m_host->window()->setHeight(113);
    QTRY_COMPARE(page->height(), 113.0);
    QQuickItem* contents = m_host->item("videoExportContents");
    QQuickItem* ok = m_host->item("okButton");
    const auto top = [](QQuickItem* item) { return item->mapToScene(QPointF(0, 0)).y(); };
    QTRY_VERIFY(top(ok) + ok->height() <= 113);
    QTRY_VERIFY(top(contents) + contents->height() <= top(ok));
    QVERIFY(contents->clip());
    QQuickItem* note = m_host->item("note");
    QVERIFY(top(note) > top(ok));
    for (int i = 0; i < 20; ++i)
        UiFixture::wheel(contents, -120);
    QTRY_VERIFY(top(note) < top(ok));
    m_host->screenshot("VideoExport-low");
}

void ExportDialogsTest::videoExportHasItsTexts()
{
    QVERIFY(m_host->open("VideoExport.qml"));
    QCOMPARE(m_host->textOf("note"),
             QString("Video will be rendered with the same apparance as on the player. This "
                     "includes thermal camera overlay visibility and adjustments, image brightness "
                     "and contrast.\n"));
    QCOMPARE(m_host->textOf("browseButton"), QString("Browse..."));
    QCOMPARE(m_host->textOf("okButton"), QString("Ok"));
    QCOMPARE(m_host->textOf("cancelButton"), QString("Cancel"));
}

void ExportDialogsTest::videoExportTakesOnlyVideoSuffixes_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("mp4") << QUrl("file:///tmp/a.mp4") << true;
    QTest::newRow("upper case") << QUrl("file:///tmp/A.MP4") << true;
    QTest::newRow("mixed case") << QUrl("file:///tmp/a.mP4") << true;
    QTest::newRow("avi") << QUrl("file:///tmp/a.avi") << false;
    QTest::newRow("only the last four count") << QUrl("file:///tmp/a.mp4.mov") << false;
    QTest::newRow("nothing chosen") << QUrl() << false;
}

void ExportDialogsTest::videoExportTakesOnlyVideoSuffixes()
{
    QFETCH(QUrl, url);
    QFETCH(bool, accepted);
    QVERIFY(m_host->open("VideoExport.qml"));
    m_host->set("videoUrl", url);
    m_host->click("okButton");
    if (accepted) {
        QTRY_VERIFY(!m_host->window()->isVisible());
        QCOMPARE(m_host->get("videoUrl").toUrl(), url);
    } else {
        QTRY_VERIFY(UiFixture::messageBox());
        QCOMPARE(UiFixture::messageBox()->windowTitle(), QString("Warning"));
        QCOMPARE(m_host->dismissMessage(),
                 QString("Invalid file extension, chose a \".mp4\" file"));
        QVERIFY(m_host->window()->isVisible());
    }
    QCOMPARE(m_host->get("ok").toBool(), accepted);
}

void ExportDialogsTest::videoFileIsChosenAndRemembered()
{
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    QVERIFY(m_host->open("VideoExport.qml"));
    m_host->click("browseButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->windowTitle(), QString("Please choose a video to export"));
    QCOMPARE(UiFixture::fileDialog()->nameFilters(), QStringList("Video files (*.mp4)"));
    QCOMPARE(UiFixture::fileDialog()->acceptMode(), QFileDialog::AcceptSave);
    QVERIFY(UiFixture::acceptFile(folder.filePath("a film")));
    const QUrl url = QUrl::fromLocalFile(folder.filePath("a film.mp4"));
    QTRY_COMPARE(m_host->get("videoUrl").toUrl(), url);
    QCOMPARE(QUrl(m_host->textOf("folderTextInput")), url);
    m_host->click("okButton");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QVERIFY(m_host->get("ok").toBool());
    QTRY_COMPARE(QSettings().value("videoExport/folder").toUrl().adjusted(QUrl::StripTrailingSlash),
                 QUrl::fromLocalFile(folder.path()));
}

/// Also when the suffix was left to the dialog.
void ExportDialogsTest::videoFileThatIsThereIsAskedAbout()
{
    QTemporaryDir folder;
    QFile earlier(folder.filePath("film.mp4"));
    QVERIFY(earlier.open(QIODevice::WriteOnly));
    QVERIFY(m_host->open("VideoExport.qml"));
    m_host->click("browseButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::questionAboutFile(folder.filePath("film")).contains("film.mp4"));
    UiFixture::fileDialog()->reject();
    QCOMPARE(m_host->get("videoUrl").toUrl(), QUrl());
}

void ExportDialogsTest::videoKeysDoNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void ExportDialogsTest::videoKeysDoNothing()
{
    QFETCH(int, key);
    QVERIFY(m_host->open("VideoExport.qml"));
    m_host->set("videoUrl", QUrl("file:///tmp/a.mp4"));
    m_host->press(Qt::Key(key));
    QTRY_COMPARE(scriptErrorsAbout("pressButton"), 1);
    QVERIFY(m_host->window()->isVisible());
    QVERIFY(!m_host->get("ok").toBool());
    QVERIFY(!UiFixture::messageBox());
}

void ExportDialogsTest::cancellingAVideoExportsNothing()
{
    QVERIFY(m_host->open("VideoExport.qml"));
    m_host->set("videoUrl", QUrl("file:///tmp/a.mp4"));
    m_host->click("cancelButton");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QVERIFY(!m_host->get("ok").toBool());
}

void ExportDialogsTest::progressShowsAndAborts()
{
    QVERIFY(m_host->make("ExportProgress.qml"));
    auto* panel = qobject_cast<QQuickItem*>(m_host->object());
    QVERIFY(panel);
    QCOMPARE(QSizeF(panel->width(), panel->height()), QSizeF(560, 120));
    QCOMPARE(m_host->get("text").toString(), QString("Video export in progress"));
    m_host->set("minimumValue", 0);
    m_host->set("maximumValue", 400);
    m_host->set("value", 100);
    m_host->set("text", "Exporting video file...");
    QObject* bar = m_host->part("progressBar");
    QCOMPARE(bar->property("maximumValue").toDouble(), 400.0);
    QCOMPARE(bar->property("value").toDouble(), 100.0);
    QCOMPARE(bar->property("indeterminate").toBool(), false);
    QCOMPARE(m_host->textOf("text1"), QString("Exporting video file..."));
    QCOMPARE(m_host->textOf("abortButton"), QString("Abort"));
    QSignalSpy aborted(panel, SIGNAL(abortClicked()));
    m_host->click("abortButton");
    QCOMPARE(aborted.count(), 1);
    m_host->screenshot("ExportProgress");
    QCOMPARE(m_host->ui().scriptErrors(), QStringList());
}

QTEST_MAIN(ExportDialogsTest)
#include "ExportDialogsTest.moc"
