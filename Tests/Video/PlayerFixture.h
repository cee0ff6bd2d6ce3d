#pragma once

#include "FakeFrameSource.h"
#include "PlayerBench.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace corv::test {

/// A folder of videos that exist only in memory, and the first steps with them, for suites of the
/// player to derive from.
class PlayerFixture
{
protected:
    /// Begins with an empty folder: for the `init` of a suite.
    void makeFolder()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_files = std::make_unique<FakeFiles>();
    }

    QString path(const QString& name) const { return m_folder->filePath(name); }

    /// A file that holds "source", so that it exists, and its pictures in memory.
    std::shared_ptr<FakeFile> addFile(const QString& name, int frames = 30, double fps = 100.0)
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write("source") != 6)
            qFatal("cannot write a source");
        auto fake = m_files->add(path(name));
        fake->frames = frames;
        fake->fps = fps;
        return fake;
    }

    /// Opens the file and waits for its first picture.
    void open(VideoPlayer& player, const QString& name)
    {
        QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
        player.setSource(path(name));
        QTRY_VERIFY(!opened.isEmpty());
        QTRY_VERIFY(!player.videoSurface() ||
                    static_cast<RecordingSurface*>(player.videoSurface())->lastNumber() >= 0);
    }

    /// A seek by time, as soon as the seek before it has been answered.
    void seekOnceAnswered(VideoPlayer& player, int ms)
    {
        bool begun = false;
        QTRY_VERIFY(begun || (begun = player.seekAtTime(timeAt(ms))));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeFiles> m_files;
};

/// The same with a player whose pictures are recorded.
class ShownPlayerFixture : protected PlayerFixture
{
protected:
    /// Begins with an empty folder and no player: for the `init` of a suite.
    void makeFolder()
    {
        m_player.reset();
        PlayerFixture::makeFolder();
    }

    void openPlayer(const QString& name)
    {
        m_player = std::make_unique<VideoPlayer>(m_files->factory());
        m_surface.numbers.clear();
        m_player->setVideoSurface(&m_surface);
        open(*m_player, name);
    }

    /// Frames 0 to 19, 20 to 34 and 35 to 44 in three files, 10 ms each.
    void openJoined()
    {
        addFile("CORV0001.MP4", 20);
        addFile("CORV0002.MP4", 15)->firstNumber = 20;
        addFile("CORV0003.MP4", 10)->firstNumber = 35;
        openPlayer("CORV0001.MP4");
    }

    RecordingSurface m_surface;
    std::unique_ptr<VideoPlayer> m_player;
};

} // namespace corv::test
