#include "Cli/OpenFlight.h"

#include "Base/sameFile.h"
#include "Cli/Command.h"

#include <QEventLoop>
#include <algorithm>

namespace corv::cli {
namespace {

bool isProject(const QString& file)
{
    return file.endsWith(QLatin1String(".ecor"), Qt::CaseInsensitive);
}

} // namespace

OpenFlight::OpenFlight()
{
    m_player.setLogParser(&m_logParser);
    m_review.setVideoPlayer(&m_player);
    m_review.setLogParser(&m_logParser);
    m_review.setProjectFiles(&m_projectFiles);
    ReviewProperties().applyTo(m_player);
    // Nobody looks at thumbnails here, and each costs a frame to be read.
    m_review.pois()->setVideoPlayer(nullptr);
}

bool OpenFlight::isFlight(const QStringList& files)
{
    const bool hasOption = std::any_of(files.begin(), files.end(), [](const QString& file) {
        return file.startsWith(QLatin1String("--"));
    });
    if (hasOption || files.isEmpty())
        return false;
    return files.size() == 1 || (files.size() == 2 && !isProject(files[0]));
}

Status OpenFlight::open(const QStringList& files, const QString& target)
{
    const Status opened = openFiles(files);
    if (opened && isOneOfFiles(target, m_review.openedFiles() + files))
        return Failure{Failure::Kind::notWritable,
                       target + QStringLiteral(": is a file of the flight itself")};
    return opened;
}

Status OpenFlight::openFiles(const QStringList& files)
{
    QEventLoop loop;
    Status result;
    bool isDone = false;
    const auto finish = [&](const Status& status) {
        if (isDone)
            return;
        result = status;
        isDone = true;
        loop.quit();
    };
    QObject::connect(&m_review, &Review::opened, &loop, [&] {
        const std::optional<Failure>& openProblem = m_review.openProblem();
        finish(openProblem ? Status(*openProblem) : Status());
    });
    QObject::connect(&m_review, &Review::openFailed, &loop,
                     [&](const Failure& failure) { finish(failure); });
    if (isProject(files[0]))
        m_review.openProject(files[0]);
    else if (const auto problem = fileProblem(QStringLiteral("The video"), files[0]))
        return *problem;
    else
        m_review.openFlight(files[0], files.value(1));
    if (!isDone)
        loop.exec();
    QObject::connect(&m_player, &VideoPlayer::thermalStatusChanged, &loop, &QEventLoop::quit);
    while (result && m_player.isThermalStatusPending())
        loop.exec();
    return result;
}

QCommandLineOption thermalClockOption()
{
    QCommandLineOption option =
        valued(QStringLiteral("thermal-clock"), QStringLiteral("file|screen"),
               QStringLiteral("the moment of a picture's thermal picture: the time in its file, or "
                              "the one on screen"));
    option.setDefaultValue(QStringLiteral("file"));
    return option;
}

bool takeThermalClock(const QCommandLineParser& line, VideoPlayer& player)
{
    const QString clock = line.value(QStringLiteral("thermal-clock"));
    player.setThermalAsOnScreen(clock == QLatin1String("screen"));
    return clock == QLatin1String("screen") || clock == QLatin1String("file");
}

} // namespace corv::cli
