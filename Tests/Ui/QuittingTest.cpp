#include "HostileLogs.h"
#include "ReviewFixture.h"
#include "Support/workDone.h"

#include <QRandomGenerator>
#include <QThreadPool>
#include <memory>

using namespace corv::test;

/// The program is ended in the middle of whatever it does: the interface goes, with every object in
/// it, while its threads are at work. Nothing may be used after its end, and the work is cut short.
/// VISTREL_QUIT_ROUNDS makes it longer; from about 150 on, QTEST_FUNCTION_TIMEOUT must grow with
/// it.
class QuittingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void endsWithoutFinishingTheWork_data();
    void endsWithoutFinishingTheWork();

private:
    void pass(int turns);

    QString m_log;
    QRandomGenerator m_random{20260601};
    std::unique_ptr<ReviewFixture> m_ui;
};

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int mostWorkMs = 20'000;
constexpr int usualRounds = 2;
#else
constexpr int mostWorkMs = 2'000;
constexpr int usualRounds = 4;
#endif

int rounds()
{
    return qEnvironmentVariableIsSet("VISTREL_QUIT_ROUNDS")
               ? qEnvironmentVariableIntValue("VISTREL_QUIT_ROUNDS")
               : usualRounds;
}

} // namespace

void QuittingTest::initTestCase()
{
    UiFixture::prepare();
    m_log = FlightMedia::instance().newFolder() + "/flight.log";
    QFile file(m_log);
    const QByteArray bytes = soundLog();
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void QuittingTest::endsWithoutFinishingTheWork_data()
{
    QTest::addColumn<bool>("opened");
    QTest::addColumn<QString>("action");
    const QString folder = FlightMedia::instance().newFolder();
    const QString log = "LogParser.parseLog('" + m_log + "', false);";
    const QString seeks = "for (var i = 0; i < 40; ++i) videoPlayer.seekAtFrame(i * 37 % 150);";
    QTest::newRow("start") << false << "";
    QTest::newRow("open") << false << "loadVideo('" + FlightMedia::instance().video() + "')";
    QTest::newRow("parse") << true << log;
    QTest::newRow("parse over and over") << true << "for (var i = 0; i < 20; ++i) {" + log + "}";
    QTest::newRow("parse and close") << true << log + "LogParser.closeLog();" + log;
    QTest::newRow("play") << true << "videoPlayer.play()";
    QTest::newRow("play with the overlay")
        << true << log + "videoPlayer.showIR = true; videoPlayer.play()";
    QTest::newRow("seek") << true << seeks;
    QTest::newRow("close") << true << seeks + "goCloseProject()";
    QTest::newRow("pictures")
        << true
        << "for (var i = 0; i < 200; ++i) timelineContent.setPOIsFromList([{time: i * 29}])";
    QTest::newRow("saved pictures")
        << true
        << "for (var i = 0; i < 20; ++i) videoPlayer.saveFrame(videoPlayer.timePosition, '" +
               folder + "/frame.png', true)";
    QTest::newRow("clipboard") << true
                               << "videoPlayer.copyFrameToClipboard(videoPlayer.timePosition)";
    QTest::newRow("export") << true << "videoPlayer.exportVideo('" + folder + "/out.mp4')";
    QTest::newRow("search") << true << "goExploreRemovableDevices()";
    QTest::newRow("report") << true
                            << "timelineContent.setPOIsFromList([{time: 1000}, {time: 2000}]);"
                               "doCreatePoiReport('" +
                                   folder + "/report.docx')";
    QTest::newRow("everything") << true
                                << log + "videoPlayer.showIR = true; videoPlayer.play();" + seeks +
                                       "videoPlayer.exportVideo('" + folder +
                                       "/all.mp4'); goExploreRemovableDevices(); "
                                       "timelineContent.addPoiAtPosition(); doCreatePoiReport('" +
                                       folder + "/all.docx')";
}

/// Some turns of the event loop, so that the end comes at another moment each time.
void QuittingTest::pass(int turns)
{
    for (int turn = 0; turn < turns; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

void QuittingTest::endsWithoutFinishingTheWork()
{
    QFETCH(bool, opened);
    QFETCH(QString, action);
    for (int round = 0; round < rounds(); ++round) {
        m_ui = std::make_unique<ReviewFixture>();
        QVERIFY(m_ui->load());
        QVERIFY(!opened || m_ui->openVideo());
        m_ui->evaluate(action);
        pass(m_random.bounded(1 << m_random.bounded(9)));
        QCOMPARE(m_ui->scriptErrors(), QStringList());
        const qint64 before = processWorkMs();
        m_ui.reset();
        QThreadPool::globalInstance()->waitForDone();
        const qint64 workMs = processWorkMs() - before;
        QVERIFY2(workMs < mostWorkMs, qPrintable(QString("%1 ms of work to end").arg(workMs)));
        // Events that were posted to objects which are gone by now must do nothing.
        QCoreApplication::processEvents();
    }
}

QTEST_MAIN(QuittingTest)
#include "QuittingTest.moc"
