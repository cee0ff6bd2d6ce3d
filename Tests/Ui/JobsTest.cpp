#include "ReviewSuite.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

using namespace corv::test;

/// Takes the place of the desktop, which opens a folder in a program of its own.
class Desktop : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened << url; }
};

/// Accepts the name of a file that exists, and answers that it may be replaced. False if that was
/// not asked.
static bool acceptReplacing(const QString& path)
{
    bool isAsked = false;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&isAsked] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->button(QMessageBox::Yes) || isAsked)
            return;
        isAsked = true;
        box->button(QMessageBox::Yes)->click();
    });
    answer.start(10);
    return UiFixture::acceptFile(path) && isAsked;
}

/// What a job leaves on screen, and what quitting makes of those that run.
class JobsTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void aFinishedSeriesOpensItsFolder();
    void aLongListLeavesTheToolsFree();
    void aClickOnTheListIsNotMeantForThePicture();
    void aFailedJobIsHighlighted();
    void aLaterSuccessEndsTheHighlight();
    void aPictureOverAFileOfTheFlightIsAFailedJob();
    void quittingCancelsAndTheNextStartSaysSo();
    void quittingWaitsWhereTheSettingsSaySo();
    void quittingTwiceCancelsWhatItWaitedFor();
    void nothingRunningEndsAtOnce();
    void theSettingIsKept();

private:
    void openFlight();
    void startSeries(int spacing);
    int writing() const { return m_ui->evaluate("review.jobs.writing").toInt(); }
    QString bar() const
    {
        QQuickItem* const item = m_ui->item("unfinishedBar");
        return item->isVisible() ? m_ui->get("unfinishedText", "text").toString() : QString();
    }

    QString m_folder;
};

void JobsTest::openFlight()
{
    QVERIFY(m_ui->openVideo());
    m_folder = FlightMedia::instance().newFolder();
}

void JobsTest::startSeries(int spacing)
{
    QVERIFY(m_ui->evaluate(QString("videoPlayer.exportFrames(0, 5000, %1, '%2', 'Frame')")
                               .arg(spacing)
                               .arg(m_folder))
                .toBool());
    QCOMPARE(writing(), 1);
}

void JobsTest::aFinishedSeriesOpensItsFolder()
{
    Desktop desktop;
    QDesktopServices::setUrlHandler("file", &desktop, "open");
    openFlight();
    startSeries(60);
    QVERIFY(m_ui->click("jobsButton"));
    QTRY_COMPARE(writing(), 0);
    QTRY_VERIFY(m_ui->item("openJobFolderButton") &&
                m_ui->item("openJobFolderButton")->isVisible());
    m_ui->screenshot("finished-job");
    QVERIFY(m_ui->click("openJobFolderButton"));
    QTRY_COMPARE(desktop.opened.size(), 1);
    QCOMPARE(QDir(desktop.opened.first().toLocalFile()), QDir(m_folder));
    QDesktopServices::unsetUrlHandler("file");
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void JobsTest::aLongListLeavesTheToolsFree()
{
    openFlight();
    for (int i = 0; i < 9; ++i) {
        startSeries(100);
        QTRY_COMPARE(writing(), 0);
    }
    QVERIFY(m_ui->click("jobsButton"));
    const QQuickItem* const panel = m_ui->item("jobsPanel");
    QTRY_VERIFY(panel->isVisible());
    QTRY_COMPARE(panel->height(), 300.0);
    const auto placeOf = [](const QQuickItem* item) {
        return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    };
    for (const char* tool : {"hUDRectangle", "controlsTab", "timelineTab", "infoTab"})
        QVERIFY2(!placeOf(panel).intersects(placeOf(m_ui->item(tool))), tool);
    QVERIFY(placeOf(m_ui->item("videoRect")).contains(placeOf(panel)));
    QTRY_VERIFY(m_ui->get("jobList", "atYEnd").toBool());
    m_ui->screenshot("jobs-many");
    // In a moving of a point of interest Escape ends that first.
    QVERIFY(m_ui->selectPoiAt(2000));
    key(Qt::Key_M);
    QTRY_VERIFY(m_ui->get("timelineContent", "movePOIMode").toBool());
    key(Qt::Key_Escape);
    QTRY_VERIFY(!m_ui->get("timelineContent", "movePOIMode").toBool());
    QVERIFY(panel->isVisible());
    key(Qt::Key_Escape);
    QTRY_VERIFY(!panel->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void JobsTest::aClickOnTheListIsNotMeantForThePicture()
{
    openFlight();
    QVERIFY(m_ui->click("jobsButton"));
    QTRY_VERIFY(m_ui->item("jobsPanel")->isVisible());
    UiFixture::click(m_ui->item("jobsPanel"));
    QVERIFY(!m_ui->get("videoPlayer", "playing").toBool());
    UiFixture::wheel(m_ui->item("jobsPanel"), 120);
    QCOMPARE(m_ui->get("videoRect", "zoom").toDouble(), 1.0);
    QVERIFY(m_ui->click("closeJobsButton"));
    QTRY_VERIFY(!m_ui->item("jobsPanel")->isVisible());
}

void JobsTest::aFailedJobIsHighlighted()
{
    openFlight();
    startSeries(100);
    QTRY_COMPARE(writing(), 0);
    QCOMPARE(m_ui->get("jobsButton", "text").toString(), QString("Jobs"));
    QVERIFY(QDir(m_folder).removeRecursively());
    QFile file(m_folder);
    QVERIFY(file.open(QIODevice::WriteOnly));
    startSeries(100);
    QTRY_COMPARE(writing(), 0);
    // After the notice in passing, too.
    QCOMPARE(m_ui->get("jobsButton", "text").toString(), QString("Jobs: failed"));
    m_ui->evaluate("jobsPanel.open = true");
    QTRY_COMPARE(m_ui->get("jobsButton", "text").toString(), QString("Jobs"));
    QTRY_VERIFY(m_ui->item("jobResult1"));
    const auto colourOf = [this](const char* result) {
        return m_ui->get(result, "color").value<QColor>();
    };
    QCOMPARE(colourOf("jobResult0"), m_ui->evaluate("Theme.textBand").value<QColor>());
    QCOMPARE(colourOf("jobResult1"), m_ui->evaluate("Theme.textFailed").value<QColor>());
}

void JobsTest::aLaterSuccessEndsTheHighlight()
{
    openFlight();
    const auto buttonText = [this] { return m_ui->get("jobsButton", "text").toString(); };
    QVERIFY(QDir(m_folder).removeRecursively());
    QFile file(m_folder);
    QVERIFY(file.open(QIODevice::WriteOnly));
    startSeries(100);
    QTRY_COMPARE(buttonText(), QString("Jobs: failed"));
    // One of another kind says nothing of it.
    QVERIFY(m_ui->importLog());
    QCOMPARE(buttonText(), QString("Jobs: failed"));
    QVERIFY(file.remove());
    QVERIFY(QDir().mkpath(m_folder));
    startSeries(100);
    QTRY_COMPARE(buttonText(), QString("Jobs"));
}

void JobsTest::aPictureOverAFileOfTheFlightIsAFailedJob()
{
    m_folder = FlightMedia::instance().newFolder();
    const QString video = m_folder + "/flight.jpg";
    QVERIFY(QFile::copy(FlightMedia::instance().video(), video));
    const qint64 size = QFileInfo(video).size();
    m_ui->call("loadVideo", {video});
    QTRY_VERIFY(m_ui->hasVideo());
    m_ui->evaluate("fileDialogs.saveImageDialog.open()");
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(acceptReplacing(video));
    QTRY_COMPARE(m_ui->get("jobsButton", "text").toString(), QString("Jobs: failed"));
    m_ui->evaluate("jobsPanel.open = true");
    QTRY_VERIFY(m_ui->item("jobResult0"));
    const QString sentence = video + " is a file of the flight itself. Choose another name.";
    QCOMPARE(m_ui->get("jobResult0", "text").toString(), sentence);
    QCOMPARE(m_ui->get("noticeText", "text").toString(), sentence);
    QCOMPARE(QFileInfo(video).size(), size);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void JobsTest::quittingCancelsAndTheNextStartSaysSo()
{
    openFlight();
    startSeries(1);
    QSignalSpy quit(&m_ui->engine(), &QQmlEngine::quit);
    m_ui->call("goExit");
    QCOMPARE(quit.size(), 1);
    QVERIFY(m_ui->reload());
    QTRY_VERIFY(!bar().isEmpty());
    m_ui->screenshot("unfinished");
    QVERIFY2(bar().startsWith("Not finished when Vistrel last ended: Save pictures (") &&
                 bar().contains(m_folder),
             qPrintable(bar()));
    QVERIFY(m_ui->click("closeUnfinishedButton"));
    QTRY_COMPARE(bar(), QString());
    QVERIFY(m_ui->reload());
    QCOMPARE(bar(), QString());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void JobsTest::quittingWaitsWhereTheSettingsSaySo()
{
    openFlight();
    m_ui->evaluate("quittingSettings.finishJobsFirst = true");
    startSeries(10);
    QSignalSpy quit(&m_ui->engine(), &QQmlEngine::quit);
    m_ui->window()->close();
    QVERIFY(m_ui->window()->isVisible());
    QVERIFY(m_ui->get("noticeText", "text").toString().contains("quits when its jobs are done"));
    QCOMPARE(quit.size(), 0);
    QTRY_COMPARE(quit.size(), 1);
    QCOMPARE(writing(), 0);
    QVERIFY(m_ui->reload());
    QCOMPARE(bar(), QString());
}

void JobsTest::quittingTwiceCancelsWhatItWaitedFor()
{
    openFlight();
    m_ui->evaluate("quittingSettings.finishJobsFirst = true");
    startSeries(1);
    QSignalSpy quit(&m_ui->engine(), &QQmlEngine::quit);
    m_ui->call("goExit");
    QCOMPARE(quit.size(), 0);
    m_ui->call("goExit");
    QCOMPARE(quit.size(), 1);
    QCOMPARE(writing(), 1);
}

void JobsTest::nothingRunningEndsAtOnce()
{
    m_ui->evaluate("quittingSettings.finishJobsFirst = true");
    QSignalSpy quit(&m_ui->engine(), &QQmlEngine::quit);
    m_ui->call("goExit");
    QCOMPARE(quit.size(), 1);
}

void JobsTest::theSettingIsKept()
{
    QVERIFY(m_ui->trigger("generalSettingsMenuItem"));
    QTRY_VERIFY(UiFixture::visibleWindow("generalSettings"));
    QQuickWindow* const window = UiFixture::visibleWindow("generalSettings");
    m_ui->screenshot("settings");
    UiFixture::click(m_ui->item("finishJobsBox", window));
    UiFixture::click(m_ui->item("okButton", window));
    QTRY_VERIFY(m_ui->evaluate("mainWindow.finishJobsFirst").toBool());
    QVERIFY(m_ui->reload());
    QVERIFY(m_ui->evaluate("mainWindow.finishJobsFirst").toBool());
}

QTEST_MAIN(JobsTest)
#include "JobsTest.moc"
