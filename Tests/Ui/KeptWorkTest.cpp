#include "ReviewSuite.h"

#include "Review/Job.h"
#include "Support/TestVideo.h"
#include "Support/savedProject.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QStandardPaths>

using namespace corv::test;

/// What a pilot has done survives: the series, the copies, the slip of a hand and the power cut.
class KeptWorkTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void aSeriesSavedInALaterFileComesBackWhole();
    void theFirstSaveCopiesTheWholeSeriesAndStaysWithIt();
    void aMissingLogTakesTheEarlierOneWithIt();
    void thePanelForgetsTheFlightBefore_data();
    void thePanelForgetsTheFlightBefore();
    void theKeyAddsNoPoiWithoutAVideo();
    void aFlightWithoutALogNeedsNoMessage();
    void aDateAtTheEndOfANameIsNoSuffix();
    void asksBeforeACompletedNameReplacesAFile();
    void aMoveOntoItsOwnPlaceChangesNothing();
    void asksBeforeAMoveReplacesAnother_data();
    void asksBeforeAMoveReplacesAnother();
    void aSecondPointAtOneFrameIsRefusedAloud();
    void deletingCanBeUndone();
    void theRestoreWindowSaysHowManyItAdds();
    void closingTheExportWindowAborts();
    void closingTheCopyWindowCancels();
    void keysDoNotPassThroughADialog();
    void aFlightWithoutANumberShowsNone();
    void unsavedWorkIsOfferedAtTheNextStart();
    void missingMediaAreLookedForWhereThePilotSays();
    void missingMediaThatAreBackCanBeOpened_data();
    void missingMediaThatAreBackCanBeOpened();
    void workWhoseMediaAreBackCanBeRestored();
    void theShownCurvesAndThePaletteComeBack();
    void aPictureIsSavedAtTheEnd_data();
    void aPictureIsSavedAtTheEnd();
    void aVideoThatIsGonePlaysOnWhenItIsBack();

private:
    /// Saves `folder`/p.ecor with the video of `folder`/card, and starts anew.
    void saveProjectBesideACard(const QString& folder);
    void waitUntilWorkIsKept();
};

namespace {

/// Three numbered files of a second each, made once.
QString series()
{
    static const QString folder = [] {
        const QString made = media().newFolder();
        for (int number = 1; number <= 3; ++number) {
            TestVideo video;
            video.frames = 25;
            video.fps = "25";
            video.firstNumber = (number - 1) * 25;
            if (!video.write(QString("%1/CORV000%2.MOV").arg(made).arg(number)))
                qFatal("cannot make the series");
        }
        return made;
    }();
    return folder + "/CORV0001.MOV";
}

} // namespace

void KeptWorkTest::aSeriesSavedInALaterFileComesBackWhole()
{
    m_ui->call("afterVideoImportChoice", {QUrl::fromLocalFile(series())});
    QTRY_VERIFY(m_ui->hasVideo());
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 500, name: 'Crack', comment: ''}])");
    m_ui->evaluate("videoPlayer.goToFrame(60)");
    QTRY_VERIFY(player("source").toString().endsWith("CORV0003.MOV"));
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProject", {path});
    QVERIFY(filesIn(path)["video"].toString().endsWith("CORV0001.MOV"));

    // Opened again where it is, at this position, and in a new program.
    m_ui->evaluate("timelineContent.setPOIsFromList([])");
    m_ui->call("loadProject", {path});
    QTRY_COMPARE(m_ui->poiNames(), QStringList("Crack"));
    restart();
    m_ui->call("loadProject", {path});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_COMPARE(m_ui->evaluate("videoPlayer.duration").toTime(), QTime(0, 0, 3));
    QCOMPARE(m_ui->poiNames(), QStringList("Crack"));
}

void KeptWorkTest::theFirstSaveCopiesTheWholeSeriesAndStaysWithIt()
{
    m_ui->call("afterVideoImportChoice", {QUrl::fromLocalFile(series())});
    QTRY_VERIFY(m_ui->hasVideo());
    const QString folder = media().newFolder();
    m_ui->call("doSaveProjectAs", {folder + "/a.ecor"});
    QVERIFY(!UiFixture::messageBox());
    QCOMPARE(QDir(folder + "/a_video").entryList(QDir::Files).size(), 3);
    const QJsonObject files = filesIn(folder + "/a.ecor");
    QCOMPARE(files["video"].toString(), QString("a_video/CORV0001.MOV"));
    QVERIFY(m_ui->trigger("saveProjectMenuItem"));
    QCOMPARE(filesIn(folder + "/a.ecor"), files);
}

void KeptWorkTest::aMissingLogTakesTheEarlierOneWithIt()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    const QString path = media().newFolder() + "/p.ecor";
    QFile project(path);
    QVERIFY(project.open(QIODevice::WriteOnly));
    project.write(QString(R"({"contents":{"flights":[{"files":{"video":"%1","log":"gone.log"}}]}})")
                      .arg(media().video())
                      .toUtf8());
    project.close();
    m_ui->call("loadProject", {path});
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY(UiFixture::messageBox()->text().contains("gone.log does not exist."));
    QVERIFY(UiFixture::dismissMessageBox());
    QCOMPARE(m_ui->poiNames(), QStringList());
    QCOMPARE(m_ui->evaluate("LogParser.source").toString(), QString());
}

void KeptWorkTest::thePanelForgetsTheFlightBefore_data()
{
    QTest::addColumn<bool>("isClosed");
    QTest::newRow("closed") << true;
    QTest::newRow("a project without its log") << false;
}

// Also at the first frame, where the position stays as it is.
void KeptWorkTest::thePanelForgetsTheFlightBefore()
{
    QFETCH(bool, isClosed);
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(media().logWithInstruments()));
    QQuickItem* const panel = m_ui->item("headUpDisplay");
    const auto picture = [this, panel] {
        const QRectF place = panel->mapRectToScene(panel->boundingRect());
        return m_ui->window()->grabWindow().copy(place.toRect());
    };
    const QImage full = picture();
    if (isClosed) {
        m_ui->call("goCloseProject");
    } else {
        const QString path = media().newFolder() + "/p.ecor";
        QFile project(path);
        QVERIFY(project.open(QIODevice::WriteOnly));
        project.write(
            QString(R"({"contents":{"flights":[{"files":{"video":"%1","log":"gone.log"}}]}})")
                .arg(media().video())
                .toUtf8());
        project.close();
        m_ui->call("loadProject", {path});
        QTRY_VERIFY(UiFixture::messageBox());
        QVERIFY(UiFixture::dismissMessageBox());
    }
    QTRY_VERIFY(picture() != full);
    const QImage shown = picture();
    QVERIFY(QMetaObject::invokeMethod(panel, "refresh"));
    QCOMPARE(picture(), shown);
}

void KeptWorkTest::theKeyAddsNoPoiWithoutAVideo()
{
    QVERIFY(m_ui->activate());
    QTest::keyClick(m_ui->window(), Qt::Key_N);
    QCOMPARE(m_ui->poiNames(), QStringList());
    QVERIFY(m_ui->openVideo());
    QTest::keyClick(m_ui->window(), Qt::Key_N);
    QCOMPARE(m_ui->poiNames(), QStringList("New POI")); // the key does work
}

void KeptWorkTest::aFlightWithoutALogNeedsNoMessage()
{
    m_ui->call("openFlight", {media().video(), "no_match"});
    QTRY_VERIFY(m_ui->hasVideo());
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProjectAs", {path});
    QCOMPARE(filesIn(path)["log"].toString(), QString());
    restart();
    m_ui->call("loadProject", {path});
    QTRY_VERIFY(m_ui->hasVideo());
    QVERIFY(!UiFixture::messageBox());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void KeptWorkTest::aDateAtTheEndOfANameIsNoSuffix()
{
    QVERIFY(m_ui->openVideo());
    const QString path = media().newFolder() + "/Site 2026.11.21";
    QVERIFY(m_ui->trigger("saveProjectAsMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(path));
    QTRY_VERIFY(QFile::exists(path + ".ecor"));
    QVERIFY(!QFile::exists(path));
}

void KeptWorkTest::asksBeforeACompletedNameReplacesAFile()
{
    QVERIFY(m_ui->openVideo());
    const QString path = media().newFolder() + "/Site 2026.11.21";
    QFile earlier(path + ".ecor");
    QVERIFY(earlier.open(QIODevice::ReadWrite) && earlier.write("earlier") && earlier.flush());
    QVERIFY(m_ui->trigger("saveProjectAsMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(path));
    QTRY_VERIFY(UiFixture::messageBox());
    UiFixture::messageBox()->button(QMessageBox::No)->click();
    QTRY_VERIFY(!UiFixture::messageBox());
    QVERIFY(earlier.seek(0));
    QCOMPARE(earlier.readAll(), QByteArray("earlier"));
}

void KeptWorkTest::aMoveOntoItsOwnPlaceChangesNothing()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 0, name: 'Crack', comment: ''}])");
    m_ui->evaluate("timelineContent.selectPoi(new Date(0, 0, 1, 0, 0, 0))");
    m_ui->call("startMovingPoi");
    QVERIFY(m_ui->evaluate("timelineContent.movePOIMode").toBool());
    m_ui->call("confirmMovingPoi");
    QCOMPARE(m_ui->evaluate("timelineContent.movePOIMode").toBool(), false);
    QCOMPARE(m_ui->get("noticeText", "text").toString(),
             QString("Not moved: 'Crack' is at this frame already."));
    QCOMPARE(m_ui->poiNames(), QStringList("Crack"));
}

void KeptWorkTest::asksBeforeAMoveReplacesAnother_data()
{
    QTest::addColumn<bool>("isYes");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("yes") << true << QStringList("Moved");
    QTest::newRow("no") << false << QStringList({"There", "Moved"});
}

void KeptWorkTest::asksBeforeAMoveReplacesAnother()
{
    QFETCH(bool, isYes);
    QFETCH(QStringList, left);
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 0, name: 'There', comment: ''},"
                   "{time: 2000, name: 'Moved', comment: ''}])");
    m_ui->evaluate("timelineContent.selectPoi(new Date(0, 0, 1, 0, 0, 2))");
    m_ui->call("startMovingPoi");
    QVERIFY(m_ui->evaluate("timelineContent.movePOIMode").toBool());
    m_ui->call("confirmMovingPoi");
    QTRY_VERIFY(UiFixture::messageBox());
    UiFixture::messageBox()->button(isYes ? QMessageBox::Yes : QMessageBox::No)->click();
    QTRY_COMPARE(m_ui->poiNames(), left);
    if (isYes) {
        QVERIFY(m_ui->trigger("undoMenuItem"));
        QCOMPARE(m_ui->poiNames(), (QStringList{"There", "Moved"}));
    }
}

void KeptWorkTest::aSecondPointAtOneFrameIsRefusedAloud()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("addNewPoiAtPosition");
    m_ui->call("addNewPoiAtPosition");
    QCOMPARE(m_ui->poiNames(), QStringList("New POI"));
    QTRY_VERIFY(m_ui->item("noticeText")->isVisible());
    QVERIFY(m_ui->get("noticeText", "text").toString().contains("'New POI'"));
    QCOMPARE(m_ui->evaluate("timelineContent.getSelectedPOI().name").toString(),
             QString("New POI"));
}

void KeptWorkTest::deletingCanBeUndone()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(0));
    m_ui->call("deleteSelectedPoi");
    QCOMPARE(m_ui->poiNames(), QStringList());
    QCOMPARE(m_ui->get("undoMenuItem", "text").toString(), QString("&Undo delete 'Crack'"));
    QVERIFY(m_ui->trigger("undoMenuItem"));
    QCOMPARE(m_ui->poiNames(), QStringList("Crack"));
    QVERIFY(m_ui->trigger("redoMenuItem"));
    QCOMPARE(m_ui->poiNames(), QStringList());
}

void KeptWorkTest::theRestoreWindowSaysHowManyItAdds()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    QVERIFY(m_ui->trigger("restorePoisMenuItem"));
    QQuickWindow* window = nullptr;
    QTRY_VERIFY(window = UiFixture::visibleWindow("restorePoiChoice"));
    QObject* outcome = m_ui->find("restoreOutcome", window);
    QVERIFY(outcome);
    QCOMPARE(outcome->property("text").toString(),
             QString("Deletes nothing. Adds 0 of the log that are missing."));
    UiFixture::click(m_ui->item("actionFillBlanks", window));
    QTRY_VERIFY(outcome->property("text").toString().startsWith("Adds 2 of the log, 2 of them"));
    window->close();
}

void KeptWorkTest::closingTheExportWindowAborts()
{
    m_ui->call("showExportProgress", {2, "Generating document..."});
    QQuickWindow* window = nullptr;
    QTRY_VERIFY(window = UiFixture::visibleWindow("exportProgressWindow"));
    const QSignalSpy aborted(window, SIGNAL(abortClicked()));
    QVERIFY(!window->close());
    QCOMPARE(aborted.count(), 1);
    QVERIFY(window->isVisible());
    m_ui->call("documentExportComplete", {false});
    QTRY_VERIFY(!UiFixture::visibleWindow("exportProgressWindow"));
}

void KeptWorkTest::closingTheCopyWindowCancels()
{
    int cancels = 0;
    corv::Job copy(corv::Job::Kind::copying, "Copying", corv::Job::Unit::bytes, [&] { ++cancels; });
    auto* window = qobject_cast<QQuickWindow*>(m_ui->find("copyProgressWindow"));
    QVERIFY(window);
    window->setProperty("job", QVariant::fromValue(&copy));
    QTRY_VERIFY(window->isExposed());
    QVERIFY(!window->close());
    QCOMPARE(cancels, 1);
    QVERIFY(window->isVisible());
    window->setProperty("job", QVariant::fromValue<corv::Job*>(nullptr));
    QTRY_VERIFY(!window->isVisible());
}

void KeptWorkTest::keysDoNotPassThroughADialog()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("saveProjectAsMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QTest::keyClick(m_ui->window(), Qt::Key_W, Qt::ControlModifier);
    QTest::keyClick(m_ui->window(), Qt::Key_N);
    QVERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->poiNames(), QStringList());
    // One that is closed before it is on screen can keep the keyboard.
    QTRY_VERIFY(UiFixture::fileDialog()->isActiveWindow());
    UiFixture::fileDialog()->reject();
    QTRY_VERIFY(!UiFixture::fileDialog());
    // And they are back afterwards. The window manager may still be moving the focus between the
    // two windows: it may pass over a request for it, and a key that comes in between has no
    // window.
    const auto closesByKey = [this] {
        m_ui->window()->requestActivate();
        if (m_ui->hasVideo() && m_ui->window()->isActive())
            QTest::keyClick(m_ui->window(), Qt::Key_W, Qt::ControlModifier);
        return !m_ui->hasVideo();
    };
    QTRY_VERIFY_WITH_TIMEOUT(closesByKey(), 20'000);
}

void KeptWorkTest::aFlightWithoutANumberShowsNone()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("nameFlight", {"Bridge", "North pier", 0});
    const QString shown = m_ui->get("namingText", "text").toString();
    QVERIFY(shown.contains("North pier"));
    QVERIFY(!shown.contains("Num."));
}

// It is done in the background, within five seconds.
void KeptWorkTest::waitUntilWorkIsKept()
{
    const QDir kept(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
                    "/recovery");
    QTRY_COMPARE_WITH_TIMEOUT(kept.entryList({"*.json"}).size(), 1, 15000);
}

void KeptWorkTest::unsavedWorkIsOfferedAtTheNextStart()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(!m_ui->item("recoveryBar")->isVisible());
    m_ui->call("addNewPoiAtPosition");
    waitUntilWorkIsKept();
    QVERIFY(m_ui->reload());
    QVERIFY(m_ui->item("recoveryBar")->isVisible());
    // Beside what is said of a crash, which does not take the offer away.
    m_ui->root()->setProperty("crashNotice", "Vistrel crashed.");
    QTRY_VERIFY(m_ui->item("crashText")->isVisible());
    QVERIFY(m_ui->item("recoveryText")->isVisible());
    QVERIFY(m_ui->click("closeCrashNoticeButton"));
    QTRY_VERIFY(!m_ui->item("crashRow")->isVisible());
    QVERIFY(m_ui->item("recoveryBar")->isVisible());
    QVERIFY(m_ui->get("recoveryText", "text").toString().contains("(1 point of interest)"));
    QVERIFY(m_ui->click("restoreRecoveryButton"));
    QTRY_COMPARE(m_ui->poiNames(), QStringList("New POI"));
    QTRY_VERIFY(!m_ui->item("recoveryBar")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void KeptWorkTest::saveProjectBesideACard(const QString& folder)
{
    QVERIFY(QDir().mkpath(folder + "/card"));
    QVERIFY(QFile::copy(media().video(), folder + "/card/CORV0001.MP4"));
    m_ui->call("afterVideoImportChoice", {QUrl::fromLocalFile(folder + "/card/CORV0001.MP4")});
    QTRY_VERIFY(m_ui->hasVideo());
    m_ui->call("doSaveProject", {folder + "/p.ecor"});
    restart();
}

void KeptWorkTest::missingMediaAreLookedForWhereThePilotSays()
{
    const QString folder = media().newFolder();
    saveProjectBesideACard(folder);
    QTRY_VERIFY(QSettings().contains("locateMedia/folder")); // as the window writes it at first
    QSettings().setValue("locateMedia/folder", QUrl::fromLocalFile(folder + "/moved"));
    QVERIFY(m_ui->reload());
    QVERIFY(QDir().rename(folder + "/card", folder + "/moved"));
    m_ui->call("loadProject", {folder + "/p.ecor"});
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY(UiFixture::dismissMessageBox());
    QVERIFY(m_ui->item("missingMediaBar")->isVisible());
    QCOMPARE(m_ui->get("missingMediaText", "text").toString(),
             QString("Files of p.ecor are missing: CORV0001.MP4."));
    QVERIFY(m_ui->click("locateMediaButton"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QTRY_COMPARE(UiFixture::fileDialog()->directory().absolutePath(), folder + "/moved");
    QVERIFY(UiFixture::acceptFile(folder));
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(!m_ui->item("missingMediaBar")->isVisible());
    QVERIFY(m_ui->trigger("saveProjectMenuItem"));
    QCOMPARE(filesIn(folder + "/p.ecor")["video"].toString(), QString("moved/CORV0001.MP4"));
}

void KeptWorkTest::missingMediaThatAreBackCanBeOpened_data()
{
    QTest::addColumn<bool>("byDrives");
    QTest::newRow("a card comes") << true;
    QTest::newRow("the window gets the keyboard") << false;
}

void KeptWorkTest::missingMediaThatAreBackCanBeOpened()
{
    QFETCH(bool, byDrives);
    const QString folder = media().newFolder();
    saveProjectBesideACard(folder);
    QVERIFY(QDir().rename(folder + "/card", folder + "/pulled"));
    m_ui->call("loadProject", {folder + "/p.ecor"});
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY(UiFixture::dismissMessageBox());
    QVERIFY(m_ui->activate());
    QTRY_COMPARE(m_ui->get("locateMediaButton", "text").toString(), QString("Locate…"));
    QWindow other;
    if (!byDrives) {
        other.show();
        other.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&other));
    }
    QVERIFY(QDir().rename(folder + "/pulled", folder + "/card"));
    if (byDrives)
        QVERIFY(QMetaObject::invokeMethod(m_ui->find("awaitedDrives"), "drivesChanged"));
    else
        QVERIFY(m_ui->activate());
    QTRY_COMPARE(m_ui->get("missingMediaText", "text").toString(),
                 QString("The missing files of p.ecor are back."));
    QCOMPARE(m_ui->get("locateMediaButton", "text").toString(), QString("Open"));
    m_ui->screenshot("missing_media_back");
    QVERIFY(m_ui->click("locateMediaButton"));
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(!m_ui->item("missingMediaBar")->isVisible());
}

void KeptWorkTest::workWhoseMediaAreBackCanBeRestored()
{
    const QString card = media().newFolder() + "/card";
    QVERIFY(QDir().mkpath(card) && QFile::copy(media().video(), card + "/CORV0001.MP4"));
    m_ui->call("loadVideo", {card + "/CORV0001.MP4"});
    QTRY_VERIFY(m_ui->hasVideo());
    m_ui->call("addNewPoiAtPosition");
    waitUntilWorkIsKept();
    QVERIFY(QDir().rename(card, card + "-pulled"));
    QVERIFY(m_ui->reload());
    QVERIFY(m_ui->item("locateRecoveryButton")->isVisible());
    QVERIFY(!m_ui->item("restoreRecoveryButton")->isVisible());
    QVERIFY(QDir().rename(card + "-pulled", card));
    QVERIFY(QMetaObject::invokeMethod(m_ui->find("awaitedDrives"), "drivesChanged"));
    QTRY_VERIFY(m_ui->item("restoreRecoveryButton")->isVisible());
    QVERIFY(m_ui->click("restoreRecoveryButton"));
    QTRY_COMPARE(m_ui->poiNames(), QStringList("New POI"));
}

void KeptWorkTest::theShownCurvesAndThePaletteComeBack()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("curvesPanel.curves = ['attitude.roll', 'gps.alt']");
    m_ui->evaluate("videoPlayer.irPalette = 2");
    const QString path = media().newFolder() + "/p.ecor";
    m_ui->call("doSaveProject", {path});
    restart();
    m_ui->call("loadProject", {path});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.curves.join()").toString(),
                 QString("attitude.roll,gps.alt"));
    QVERIFY(m_ui->evaluate("curvesPanel.open").toBool());
    QCOMPARE(player("irPalette").toInt(), 2);
}

void KeptWorkTest::aPictureIsSavedAtTheEnd_data()
{
    QTest::addColumn<int>("damagedBytes");
    QTest::newRow("whole") << 0;
    QTest::newRow("last frames damaged") << 2000;
}

void KeptWorkTest::aPictureIsSavedAtTheEnd()
{
    QFETCH(int, damagedBytes);
    const QString folder = media().newFolder();
    const QString path = folder + "/clip.mp4";
    TestVideo video;
    video.encoding = QString("-c:v libx264 -preset ultrafast -g 12 -movflags faststart").split(' ');
    QVERIFY(video.write(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() - damagedBytes));
    QCOMPARE(file.write(QByteArray(damagedBytes, '\x5a')), qint64(damagedBytes));
    file.close();
    m_ui->call("openFlight", {path, ""});
    QTRY_COMPARE(player("frameCount").toInt(), 30);

    // Twice: what is played to its end starts anew.
    for (const QString name : {"first", "second"}) {
        QTRY_VERIFY(!m_ui->evaluate("videoPlayer.isReadToEnd").toBool());
        m_ui->evaluate("videoPlayer.togglePlayPause()");
        QVERIFY(player("playing").toBool());
        QTRY_VERIFY(!player("playing").toBool());
        QCOMPARE(player("currentFrameIndex").toInt() < 29, damagedBytes > 0);
        QTRY_VERIFY(!m_ui->evaluate("videoPlayer.isReadToEnd").toBool());
        QTRY_VERIFY(m_ui->click("saveImageButton"));
        QTRY_VERIFY(UiFixture::fileDialog());
        QVERIFY(UiFixture::acceptFile(folder + "/" + name));
        QTRY_VERIFY(QFile::exists(folder + "/" + name + ".jpg"));
    }
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

// As when its card is pulled out and put back in.
void KeptWorkTest::aVideoThatIsGonePlaysOnWhenItIsBack()
{
    constexpr int frames = 100;
    const QString path = media().newFolder() + "/clip.mp4";
    TestVideo video;
    video.frames = frames;
    video.encoding =
        QString("-vf noise=alls=60:allf=t -c:v mpeg4 -q:v 1 -g 12 -movflags faststart").split(' ');
    QVERIFY(video.write(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.size() > 3'000'000); // far more than is read ahead
    m_ui->call("openFlight", {path, ""});
    QTRY_COMPARE(player("frameCount").toInt(), frames);
    QTRY_VERIFY(m_ui->item("playButton")->isVisible());
    QVERIFY(file.resize(bytes.size() / 2));

    const auto notice = [this] { return m_ui->get("noticeText", "text").toString(); };
    QVERIFY(m_ui->click("playButton"));
    QTRY_VERIFY(!player("playing").toBool());
    QTRY_VERIFY(m_ui->item("noticeText")->isVisible());
    QVERIFY(notice().startsWith("clip.mp4 can no longer be read."));
    m_ui->screenshot("video gone");
    // Longer than other notices.
    QVERIFY(m_ui->find("noticeTimer")->setProperty("running", false));
    QVERIFY(m_ui->item("noticeText")->isVisible());
    const int shown = player("currentFrameIndex").toInt();
    QVERIFY(shown > 0 && shown < frames / 2 + 10);
    m_ui->evaluate("infoTab.showNotice('')");
    QVERIFY(m_ui->click("nextFrameButton"));
    QTRY_VERIFY(notice().startsWith("clip.mp4 can no longer be read."));

    QVERIFY(file.seek(0));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
    file.close();
    QVERIFY(m_ui->click("playButton"));
    QVERIFY(player("playing").toBool());
    QTRY_COMPARE(player("currentFrameIndex").toInt(), frames - 1);
    QTRY_VERIFY(!player("playing").toBool());
    QVERIFY(m_ui->find("noticeTimer")->setProperty("running", false));
    QVERIFY(!m_ui->item("noticeText")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(KeptWorkTest)
#include "KeptWorkTest.moc"
