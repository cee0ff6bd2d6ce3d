#pragma once

#include "PlayerFixture.h"

#include <QPair>

namespace corv::test {

/// What an export signals. It does so on the worker's thread, where a QSignalSpy would write beside
/// its reader: this one receives them on the test's thread.
class ExportRecord : public QObject
{
public:
    explicit ExportRecord(VideoPlayer& player)
    {
        connect(&player, &VideoPlayer::videoExportProgress, this,
                [this](int done, int total) { progress << qMakePair(done, total); });
        connect(&player, &VideoPlayer::videoExportComplete, this,
                [this](bool result) { results << result; });
    }

    QList<QPair<int, int>> progress;
    QList<bool> results;
};

/// One player after the other on videos in memory at 25 frames a second, for suites of what is
/// taken out of a video to derive from.
class ExportFixture : protected PlayerFixture
{
protected:
    /// Begins with no player and an empty folder: for the `init` of a suite.
    void begin()
    {
        m_player.reset();
        makeFolder();
    }

    std::shared_ptr<FakeFile> addFile(const QString& name, int frames = 30, int firstNumber = 0)
    {
        auto fake = PlayerFixture::addFile(name, frames, 25.0);
        fake->firstNumber = firstNumber;
        return fake;
    }

    /// Opens the file in a new player and waits for its first picture.
    void open(const QString& name)
    {
        m_player = std::make_unique<VideoPlayer>(m_files->factory());
        m_surface.numbers.clear();
        m_player->setVideoSurface(&m_surface);
        m_player->setSource(path(name));
        QTRY_VERIFY(m_surface.lastNumber() >= 0);
    }

    RecordingSurface m_surface;
    std::unique_ptr<VideoPlayer> m_player;
};

} // namespace corv::test
