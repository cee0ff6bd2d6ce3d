#include "PlayerBench.h"
#include "Video/VideoInfoReader.h"

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace corv;
using namespace corv::test;

// Clips that real cameras and real encoders made, from packages of the distribution. They are
// fetched once into the build folder.
class RealClipsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void playsSeeksAndSteps_data();
    void playsSeeksAndSteps();

private:
    bool unpack(const QString& package);

    QDir m_folder{QStringLiteral(CLIPS_FOLDER)};
    QStringList m_clips;
};

bool RealClipsTest::unpack(const QString& package)
{
    const QString unpacked = m_folder.filePath(package);
    if (QFile::exists(unpacked))
        return true;
    QProcess program;
    program.setWorkingDirectory(m_folder.path());
    program.start(QStringLiteral("apt-get"), {"download", package});
    if (!program.waitForFinished(120000) || program.exitCode() != 0)
        return false;
    const QStringList archives = m_folder.entryList({package + QStringLiteral("_*.deb")});
    if (archives.isEmpty())
        return false;
    // Under another name until it is whole.
    const QString part = unpacked + QStringLiteral(".part");
    return QProcess::execute(QStringLiteral("dpkg-deb"),
                             {"-x", m_folder.filePath(archives.first()), part}) == 0 &&
           m_folder.rename(part, unpacked);
}

void RealClipsTest::initTestCase()
{
    QVERIFY(m_folder.mkpath(QStringLiteral(".")));
    for (const char* package : {"python3-imageio", "opencv-doc"}) {
        if (!unpack(QString::fromLatin1(package)))
            continue;
        QDirIterator files(m_folder.filePath(QString::fromLatin1(package)),
                           {"*.mp4", "*.avi", "*.mov", "*.3gp"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext())
            m_clips << files.next();
    }
    m_clips.sort();
    if (m_clips.isEmpty())
        QSKIP("no package registry can be reached, and no clips were fetched before");
}

void RealClipsTest::playsSeeksAndSteps_data()
{
    QTest::addColumn<QString>("clip");
    for (const QString& clip : m_clips)
        QTest::newRow(qPrintable(QFileInfo(clip).fileName())) << clip;
}

void RealClipsTest::playsSeeksAndSteps()
{
    QFETCH(QString, clip);
    QVERIFY(VideoInfoReader(clip).getDurationMs() >= 0);
    VideoPlayer player;
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    // A clip that is read through shows its first picture before it is open.
    connect(&player, &VideoPlayer::hasVideoOpenedChanged, &player,
            [&surface] { surface.numbers.clear(); });
    player.setSource(clip);
    QTRY_VERIFY(player.hasVideoOpened());
    QTRY_COMPARE(surface.numbers.size(), 1);
    QSignalSpy frames(&player, &VideoPlayer::currentFrameIndexChanged);
    player.play();
    // Some clips hold each picture for half a second, and none needs longer than all its pictures.
    const int lastMs = QTime(0, 0, 0, 0).msecsTo(player.duration());
    QTRY_VERIFY_WITH_TIMEOUT(frames.count() >= 15, lastMs + 5000);
    player.pause();
    for (int i = 0; i < frames.count(); ++i)
        QCOMPARE(frames.at(i).first().toInt(), i + 1);

    for (int part = 9; part >= 0; part -= 3) {
        const int shown = surface.numbers.size();
        const QTime asked = timeAt(lastMs / 10 * part);
        QVERIFY(player.seekAtTime(asked));
        QTRY_COMPARE(surface.numbers.size(), shown + 1);
        const QTime position = player.timePosition();
        // A step there and back ends on the same picture.
        const int index = player.currentFrameIndex();
        const QVideoFrame there = surface.last;
        QVERIFY(player.seekAtFrame(index + 1));
        QTRY_COMPARE(player.currentFrameIndex(), index + 1);
        // No other picture belongs to the time, however long the clip holds this one.
        QVERIFY(std::abs(position.msecsTo(asked)) <= position.msecsTo(player.timePosition()));
        QVERIFY(player.seekAtFrame(index));
        QTRY_COMPARE(player.currentFrameIndex(), index);
        QVERIFY(samePicture(there, surface.last));
        StillFrame still(player, player.timePosition());
        QTRY_VERIFY_WITH_TIMEOUT(still.came(), 30000);
        QCOMPARE(still.image().size(), surface.last.size());
    }
    QVERIFY(player.seekAtTime(player.duration()));
    const int before = surface.numbers.size();
    QTRY_COMPARE(surface.numbers.size(), before + 1);
    QVERIFY(player.seekAtFrame(player.currentFrameIndex() + 1));
    QTRY_COMPARE(surface.numbers.size(), before + 2); // behind the last is the last again
}

QTEST_MAIN(RealClipsTest)
#include "RealClipsTest.moc"
