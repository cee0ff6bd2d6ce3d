#include "HostileLogs.h"
#include "ReviewFixture.h"
#include "Support/TestVideo.h"
#include "Support/workDone.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <memory>

using namespace corv::test;

/// Files that are spoilt, made with malice or edited by hand, through the whole main window: each
/// is opened, played, searched, looked at in every mode, exported from, saved and closed. Nothing
/// may end the program or hold its interface, and the pilot gets a message where one helps.
class HostileInputTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void survivesLogs_data();
    void survivesLogs();
    void unreadableLogShowsAMessage_data();
    void unreadableLogShowsAMessage();
    void survivesVideos_data();
    void survivesVideos();
    void unreadableVideoShowsAMessage_data();
    void unreadableVideoShowsAMessage();
    void survivesAVideoThatVanishes_data();
    void survivesAVideoThatVanishes();
    void survivesProjects_data();
    void survivesProjects();
    void survivesManyPois();
    void unreadableProjectShowsAMessage_data();
    void unreadableProjectShowsAMessage();

private:
    void takeWork();
    bool openLog(const QByteArray& bytes);
    void review();
    void look();
    void playAndSeek();
    void savePicture();
    void saveAndClose();
    QString answeredBoxes();

    std::unique_ptr<ReviewFixture> m_ui;
    QTimer m_pulse;
    qint64 m_workAtPulseMs = 0;
    qint64 m_mostWorkMs = 0; ///< between two turns of the event loop
};

namespace {

// A patient person waits for a quarter of it; the rest is for a slower machine.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int mostWorkAtOnceMs = 20'000;
#else
constexpr int mostWorkAtOnceMs = 4'000;
#endif

QString write(const QString& name, const QByteArray& bytes)
{
    const QString path = media().newFolder() + '/' + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write a file for the test");
    return path;
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray videoBytes(const TestVideo& video)
{
    const QString path = media().newFolder() + "/made.mp4";
    return video.write(path) ? readAll(path) : QByteArray();
}

TestVideo shortVideo(QSize size = {320, 240}, int frames = 12)
{
    TestVideo video;
    video.frames = frames;
    video.size = size;
    return video;
}

/// A flight of two numbered files; the first one's path.
QString numberedFlight(const QByteArray& first, const QByteArray& second)
{
    const QString path = write("CORV0001.mp4", first);
    QFile other(QString(path).replace("0001", "0002"));
    if (!other.open(QIODevice::WriteOnly) || other.write(second) != second.size())
        qFatal("cannot write a file for the test");
    return path;
}

QString project(QByteArray poi, QByteArray properties)
{
    const QByteArray log = QJsonValue(media().log()).toString().toUtf8();
    return write("p.ecor", "{\"contents\":{\"flights\":[{\"files\":{\"video\":\"" +
                               media().video().toUtf8() + "\",\"log\":\"" + log +
                               "\"},\"poi\":" + poi + ",\"properties\":" + properties + "}]}}");
}

} // namespace

void HostileInputTest::initTestCase()
{
    UiFixture::prepare();
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    m_pulse.setInterval(5);
    connect(&m_pulse, &QTimer::timeout, this, &HostileInputTest::takeWork);
}

/// The work of the interface thread since the last turn of its event loop.
void HostileInputTest::takeWork()
{
    const qint64 nowMs = threadWorkMs();
    m_mostWorkMs = std::max(m_mostWorkMs, nowMs - m_workAtPulseMs);
    m_workAtPulseMs = nowMs;
}

void HostileInputTest::init()
{
    m_mostWorkMs = 0;
    m_workAtPulseMs = threadWorkMs();
    m_pulse.start();
}

void HostileInputTest::cleanup()
{
    answeredBoxes();
    m_ui->call("goCloseProject");
    QCoreApplication::processEvents();
    m_pulse.stop();
    takeWork();
    QVERIFY2(m_mostWorkMs < mostWorkAtOnceMs,
             qPrintable(QString("the interface was held for %1 ms of work").arg(m_mostWorkMs)));
    QVERIFY(m_ui->window()->isVisible());
    QStringList errors = m_ui->scriptErrors();
    // What a box said is no error of a script.
    errors.erase(std::remove_if(errors.begin(), errors.end(),
                                [](const QString& line) { return line.startsWith("Error: "); }),
                 errors.end());
    QCOMPARE(errors, QStringList());
}

void HostileInputTest::cleanupTestCase()
{
    m_ui.reset();
}

/// The texts of all boxes that are open, which are closed.
QString HostileInputTest::answeredBoxes()
{
    QString texts;
    while (QMessageBox* box = UiFixture::messageBox()) {
        texts += box->text() + '\n';
        if (!UiFixture::dismissMessageBox())
            box->close();
    }
    return texts;
}

bool HostileInputTest::openLog(const QByteArray& bytes)
{
    return m_ui->importLog(write("hostile.log", bytes));
}

/// The pictures and the panels in every mode. Several modes at once are seen between two turns of
/// the event loop, as by a quick hand.
void HostileInputTest::look()
{
    for (const char* mode :
         {"videoPlayer.showIR = true", "videoPlayer.irOverlayTransparent = true",
          "videoPlayer.fullScreenIR = true",
          "videoPlayer.irOverlayTransparent = false; videoPlayer.fullScreenIR = false",
          "videoPlayer.autoIRMapping = !videoPlayer.autoIRMapping"}) {
        m_ui->evaluate(mode);
        for (int tab = 0; tab < 2; ++tab)
            m_ui->find("tabsContainer")->setProperty("currentIndex", tab);
        QCoreApplication::processEvents();
    }
    UiFixture::wheel(m_ui->item("timelineContent"), 120, Qt::ControlModifier);
    UiFixture::wheel(m_ui->item("timelineContent"), -120, Qt::ControlModifier);
}

void HostileInputTest::playAndSeek()
{
    m_ui->evaluate("videoPlayer.seekAtFrame(0)");
    QTRY_COMPARE(m_ui->evaluate("videoPlayer.currentFrameIndex").toInt(), 0);
    m_ui->evaluate("videoPlayer.play()");
    QTRY_VERIFY(
        m_ui->evaluate("videoPlayer.currentFrameIndex > 2 || !videoPlayer.playing").toBool());
    for (const int frame : {1 << 30, -5, 7, 3})
        m_ui->evaluate(QString("videoPlayer.seekAtFrame(%1)").arg(frame));
    m_ui->evaluate("videoPlayer.pause()");
}

/// Where a file has no picture, the diagnostics say so.
void HostileInputTest::savePicture()
{
    const QString picture = media().newFolder() + "/frame.png";
    const int failures = m_ui->log().count("Failed to extract frame");
    m_ui->evaluate(
        QString("videoPlayer.saveFrame(videoPlayer.timePosition, '%1', true)").arg(picture));
    QTRY_VERIFY(!QImage(picture).isNull() ||
                m_ui->log().count("Failed to extract frame") > failures);
}

/// What a person does with an open flight.
void HostileInputTest::review()
{
    look();
    playAndSeek();
    look();
    savePicture();
    saveAndClose();
}

void HostileInputTest::saveAndClose()
{
    const QString saved = media().newFolder() + "/saved.ecor";
    m_ui->call("doSaveProject", {saved});
    QVERIFY(QJsonDocument::fromJson(readAll(saved)).isObject());
    m_ui->call("goCloseProject");
    QVERIFY(!m_ui->hasVideo());
}

// --- Logs ------------------------------------------------------------------------------------

void HostileInputTest::survivesLogs_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("sound") << soundLog();
    for (const HostileLog& log : hostileLogs())
        QTest::newRow(log.name) << log.bytes;
}

void HostileInputTest::survivesLogs()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(m_ui->openVideo());
    QVERIFY(openLog(bytes));
    answeredBoxes();
    review();
}

void HostileInputTest::unreadableLogShowsAMessage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("cause");
    const QString noLog = "is not a flight log.";
    QTest::newRow("nothing") << QByteArray() << "is empty.";
    QTest::newRow("a text") << QByteArray("no log at all") << noLog;
    QTest::newRow("zeros") << QByteArray(100'000, '\0') << noLog;
    QTest::newRow("a video") << readAll(media().video()) << noLog;
    QTest::newRow("cut in the description")
        << soundLog().left(300) << "ends within its description.";
    QTest::newRow("tags without end") << QByteArray("<a>").repeated(200'000) << noLog;
}

void HostileInputTest::unreadableLogShowsAMessage()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, cause);
    QVERIFY(m_ui->openVideo());
    QVERIFY(openLog(bytes));
    QTRY_VERIFY(UiFixture::messageBox());
    const QString text = answeredBoxes();
    QVERIFY2(text.startsWith("Log file could not be read.\n\n"), qPrintable(text));
    QVERIFY2(text.endsWith(cause + '\n'), qPrintable(text));
    review();
}

// --- Videos ----------------------------------------------------------------------------------

void HostileInputTest::survivesVideos_data()
{
    QTest::addColumn<QString>("path");
    const QByteArray sound = videoBytes(shortVideo());
    const QByteArray large = videoBytes(shortVideo({640, 480}));
    const QByteArray odd = videoBytes(shortVideo({321, 241}));
    QTest::newRow("odd sizes") << write("odd.mp4", odd);
    QTest::newRow("tiny") << write("tiny.mp4", videoBytes(shortVideo({16, 16})));
    QTest::newRow("one frame") << write("one.mp4", videoBytes(shortVideo({320, 240}, 1)));
    QTest::newRow("files of one frame") << numberedFlight(videoBytes(shortVideo({320, 240}, 1)),
                                                          videoBytes(shortVideo({320, 240}, 1)));
    QTest::newRow("wide") << write("wide.mp4", videoBytes(shortVideo({2000, 2})));
    QTest::newRow("second file of another size") << numberedFlight(sound, large);
    QTest::newRow("second file of odd sizes") << numberedFlight(sound, odd);
    QTest::newRow("second file of a smaller size") << numberedFlight(large, sound);
    QTest::newRow("second file empty") << numberedFlight(sound, {});
    QTest::newRow("second file a text") << numberedFlight(sound, "no video");
    QTest::newRow("second file cut off") << numberedFlight(sound, sound.left(sound.size() / 2));
    QTest::newRow("first file broken") << numberedFlight("no video", sound);
    QByteArray spoilt = sound;
    for (int place = 60; place < spoilt.size() / 2; place += 97)
        spoilt[place] = static_cast<char>(spoilt[place] ^ 0x55);
    QTest::newRow("spoilt pictures") << write("spoilt.mp4", spoilt);
}

void HostileInputTest::survivesVideos()
{
    QFETCH(QString, path);
    m_ui->call("loadVideo", {path});
    QTRY_VERIFY(m_ui->hasVideo());
    QVERIFY(openLog(soundLog()));
    answeredBoxes();
    review();
}

void HostileInputTest::unreadableVideoShowsAMessage_data()
{
    QTest::addColumn<QString>("path");
    const QByteArray sound = videoBytes(shortVideo());
    const QString folder = media().newFolder() + "/folder.mp4";
    QVERIFY(QDir().mkpath(folder));
    QTest::newRow("folder") << folder;
    QTest::newRow("empty") << write("empty.mp4", {});
    QTest::newRow("text") << write("text.mp4", "file '/etc/passwd'\n");
    QTest::newRow("list of files") << write("list.mp4", "#EXTM3U\n#EXTINF:1\n/etc/passwd\n");
    QTest::newRow("cut off") << write("cut.mp4", sound.left(sound.size() / 2));
    QTest::newRow("log") << write("log.mp4", soundLog());
    QTest::newRow("none of several") << numberedFlight("no video", "no video");
}

void HostileInputTest::unreadableVideoShowsAMessage()
{
    QFETCH(QString, path);
    m_ui->call("loadVideo", {path});
    QTRY_VERIFY(UiFixture::messageBox());
    // What it is or what to do about it follows.
    QVERIFY(answeredBoxes().contains("Video file " + path + " could not be read.\n\n"));
    QVERIFY(!m_ui->hasVideo());
}

void HostileInputTest::survivesAVideoThatVanishes_data()
{
    QTest::addColumn<bool>("cut");
    QTest::newRow("removed") << false;
    QTest::newRow("cut to nothing") << true;
}

void HostileInputTest::survivesAVideoThatVanishes()
{
    QFETCH(bool, cut);
    const QByteArray bytes = videoBytes(shortVideo({320, 240}, 60));
    const QString path = numberedFlight(bytes, bytes);
    m_ui->call("loadVideo", {path});
    QTRY_VERIFY(m_ui->hasVideo());
    m_ui->evaluate("videoPlayer.play()");
    QTRY_VERIFY(m_ui->evaluate("videoPlayer.currentFrameIndex > 5").toBool());
    QFile second(QString(path).replace("0001", "0002"));
    QVERIFY(cut ? second.resize(0) : second.remove());
    QVERIFY(!cut || QFile::resize(path, 0));
    QTRY_VERIFY(!m_ui->evaluate("videoPlayer.playing").toBool());
    look();
    m_ui->evaluate("videoPlayer.seekAtFrame(100)");
    m_ui->evaluate("videoPlayer.seekAtFrame(1)");
    m_ui->evaluate(QString("videoPlayer.saveFrame(videoPlayer.timePosition, '%1', true)")
                       .arg(media().newFolder() + "/frame.png"));
    m_ui->evaluate("timelineContent.addPoiAtPosition()");
    saveAndClose();
}

// --- Projects --------------------------------------------------------------------------------

void HostileInputTest::survivesProjects_data()
{
    QTest::addColumn<QByteArray>("poi");
    QTest::addColumn<QByteArray>("properties");
    const auto row = [](const char* name, const char* poi, const char* properties) {
        QTest::newRow(name) << QByteArray(poi) << QByteArray(properties);
    };
    row("lists for objects", "[[],[1],\"a\",null,5]", "[]");
    row("numbers for all", "[{\"time\":1,\"name\":2,\"comment\":3}]",
        "{\"display\":1,\"thermal_video\":2,\"correction\":3,\"designation\":4}");
    row("texts for numbers", "[{\"time\":\"NaN\"},{\"time\":\"12\"},{\"time\":\"1e308\"}]",
        "{\"display\":{\"contrast\":\"NaN\",\"brightness\":\"Infinity\"},"
        "\"correction\":{\"log_offset\":\"-1\"}}");
    row("negative times", "[{\"time\":-1},{\"time\":-2147483648},{\"time\":-1e308}]", "{}");
    row("late times", "[{\"time\":86400000},{\"time\":2147483647},{\"time\":1e308}]", "{}");
    row("huge contrast", "[]", "{\"display\":{\"contrast\":1e308,\"brightness\":1e308}}");
    row("huge negative contrast", "[]",
        "{\"display\":{\"contrast\":-1e308,\"brightness\":-1e308}}");
    row("offset beside the picture", "[]",
        "{\"thermal_video\":{\"visible\":true,\"align_offset_x\":5,\"align_offset_y\":-5}}");
    row("offset in another world", "[]",
        "{\"thermal_video\":{\"visible\":true,\"align_offset_x\":1e308,\"align_offset_y\":-1e308}"
        "}");
    row("empty range", "[]",
        "{\"thermal_video\":{\"visible\":true,\"colormap_auto\":false,"
        "\"colormap_min\":100,\"colormap_max\":100}}");
    row("inverted range", "[]",
        "{\"thermal_video\":{\"visible\":true,\"colormap_auto\":false,"
        "\"colormap_min\":1e308,\"colormap_max\":-1e308}}");
    row("log far away", "[]", "{\"correction\":{\"log_offset\":2147483647}}");
    row("log far away on the other side", "[]", "{\"correction\":{\"log_offset\":-2147483648}}");
    row("log in another world", "[]", "{\"correction\":{\"log_offset\":1e308}}");
    row("naming of other kinds", "[]",
        "{\"designation\":{\"mission_name\":[],\"flight_name\":{},\"flight_number\":\"x\"}}");
    row("naming of huge numbers", "[]",
        "{\"designation\":{\"mission_name\":1e308,\"flight_name\":null,\"flight_number\":1e308}}");
    row("naming of markup", "[{\"time\":5,\"name\":\"<b><img src='file:///dev/zero'>\"}]",
        "{\"designation\":{\"mission_name\":\"<table><tr><td>%1%2\",\"flight_name\":\"\\u0000\","
        "\"flight_number\":-1}}");
}

void HostileInputTest::survivesProjects()
{
    QFETCH(QByteArray, poi);
    QFETCH(QByteArray, properties);
    m_ui->call("loadProject", {project(poi, properties)});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(!m_ui->evaluate("LogParser.isParsing").toBool());
    QCOMPARE(answeredBoxes(), QString());
    QVERIFY(openLog(soundLog()));
    answeredBoxes();
    review();
}

void HostileInputTest::survivesManyPois()
{
    QByteArray poi;
    for (int ms = 0; ms < 100'000; ++ms)
        poi += (ms ? ",{\"time\":" : "{\"time\":") + QByteArray::number(ms) + '}';
    m_ui->call("loadProject", {project('[' + poi + ']', "{}")});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(!m_ui->evaluate("LogParser.isParsing").toBool());
    QVERIFY(m_ui->poiNames().size() > 1000);
    // Their thumbnails take minutes, and nothing waits for them.
    look();
    playAndSeek();
    saveAndClose();
}

void HostileInputTest::unreadableProjectShowsAMessage_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    const QString noVideo = "Project could be opened, but referenced video file not found.";
    QTest::newRow("nothing") << QByteArray() << noVideo;
    QTest::newRow("a number") << QByteArray("5") << noVideo;
    QTest::newRow("nested without end") << QByteArray(100'000, '[') << noVideo;
    QTest::newRow("files of other kinds")
        << QByteArray(R"({"contents":{"flights":[{"files":{"video":[1],"log":{}}}]}})") << noVideo;
    QTest::newRow("a folder for a video")
        << QByteArray(R"({"contents":{"flights":[{"files":{"video":"/","log":"/"}}]}})") << noVideo;
    QTest::newRow("a device for a video")
        << QByteArray(R"({"contents":{"flights":[{"files":{"video":"/dev/zero"}}]}})") << noVideo;
}

void HostileInputTest::unreadableProjectShowsAMessage()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    m_ui->call("loadProject", {write("p.ecor", text)});
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY2(UiFixture::messageBox()->text().startsWith(message),
             qPrintable(UiFixture::messageBox()->text()));
    answeredBoxes();
    QVERIFY(!m_ui->hasVideo());
}

QTEST_MAIN(HostileInputTest)
#include "HostileInputTest.moc"
