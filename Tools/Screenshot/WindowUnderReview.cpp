#include "WindowUnderReview.h"

#include "Base/videoTime.h"
#include "Video/VideoPlayer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QMouseEvent>
#include <QQmlContext>
#include <QQmlExpression>
#include <QQuickWindow>
#include <atomic>
#include <memory>
#include <stdexcept>

namespace corv {
namespace {

constexpr qint64 patienceMs = 120'000;
constexpr int leadMs = 1000;
constexpr qint64 restMs = 300;

} // namespace

WindowUnderReview::WindowUnderReview()
{
    m_engine.rootContext()->setContextProperty(QStringLiteral("applicationDirPath"),
                                               QApplication::applicationDirPath());
    m_engine.load(QUrl(QStringLiteral("qrc:/main.qml")));
    if (!m_engine.rootObjects().isEmpty())
        m_root = m_engine.rootObjects().constFirst();
    m_window = qobject_cast<QQuickWindow*>(m_root);
    if (m_window)
        m_player = m_root->findChild<VideoPlayer*>(QStringLiteral("videoPlayer"));
    if (!m_player)
        throw std::runtime_error("the interface could not be loaded");
}

void WindowUnderReview::open(const QString& file)
{
    const QFileInfo info(file);
    const bool isProject = info.suffix().toLower() == QLatin1String("ecor");
    waitFor(QStringLiteral("the window"), [this] { return m_window->isExposed(); });
    QMetaObject::invokeMethod(m_root, isProject ? "loadProject" : "loadVideo",
                              Q_ARG(QVariant, QVariant(info.absoluteFilePath())));
    waitFor(QStringLiteral("the video"), [this] { return m_player->hasVideoOpened(); });
    waitFor(QStringLiteral("the log"),
            [this] { return !evaluate(QStringLiteral("LogParser.isParsing")).toBool(); });
    // Frames are fetched one after the other: once this one is here, the thumbnails asked for
    // earlier are as well.
    const auto fetched = std::make_shared<std::atomic<bool>>(false);
    m_player->getFrameAsync(mostInterestingMoment(), [fetched](const QImage&) { *fetched = true; });
    waitFor(QStringLiteral("the thumbnails"), [fetched] { return fetched->load(); });
}

void WindowUnderReview::playUpTo(const QTime& moment)
{
    const int start = qMax(0, msOfTime(moment) - leadMs);
    waitFor(QStringLiteral("the seek"),
            [this, start] { return m_player->seekAtTime(timeOfMs(start)); });
    m_player->play();
    waitFor(QStringLiteral("the playing video"),
            [this, &moment] { return m_player->timePosition() >= moment; });
}

void WindowUnderReview::showMoment(const QTime& moment)
{
    m_player->pause();
    waitFor(QStringLiteral("the seek"), [&] { return m_player->seekAtTime(moment); });
    waitFor(QStringLiteral("the picture"), [&] { return m_player->timePosition() == moment; });
}

QQuickWindow* WindowUnderReview::waitForWindow(const QString& objectName) const
{
    QQuickWindow* found = nullptr;
    waitFor(objectName, [&] {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (window->objectName() == objectName && window->isExposed())
                found = qobject_cast<QQuickWindow*>(window);
        }
        return found != nullptr;
    });
    return found;
}

void WindowUnderReview::click(const QPointF& position) const
{
    const auto send = [&](QEvent::Type type, const QPointF& place, Qt::MouseButton button,
                          Qt::MouseButtons buttons) {
        QMouseEvent event(type, place, place, m_window->mapToGlobal(place.toPoint()), button,
                          buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window, &event);
    };
    // What is under the pointer is known to the window only once it has moved there.
    send(QEvent::MouseMove, position - QPointF(1, 0), Qt::NoButton, Qt::NoButton);
    send(QEvent::MouseMove, position, Qt::NoButton, Qt::NoButton);
    send(QEvent::MouseButtonPress, position, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, position, Qt::LeftButton, Qt::NoButton);
}

QTime WindowUnderReview::mostInterestingMoment() const
{
    const QVariantList pois = evaluate(QStringLiteral("timelineContent.getPOIs()")).toList();
    const int timeMs = pois.isEmpty() ? msOfTime(m_player->duration()) / 2
                                      : pois.constFirst().toMap()[QStringLiteral("time")].toInt();
    return timeOfMs(timeMs);
}

QVariant WindowUnderReview::evaluate(const QString& expression) const
{
    return QQmlExpression(qmlContext(m_root), m_root, expression).evaluate();
}

QImage WindowUnderReview::picture() const
{
    return m_window->grabWindow();
}

QImage WindowUnderReview::pictureAtRest(QQuickWindow* window) const
{
    QImage picture;
    QElapsedTimer sinceChange;
    waitFor(QStringLiteral("a window at rest"), [&] {
        const QImage now = window->grabWindow();
        if (now != picture || !sinceChange.isValid()) {
            picture = now;
            sinceChange.start();
        }
        return sinceChange.hasExpired(restMs);
    });
    return picture;
}

void WindowUnderReview::waitFor(const QString& what, const std::function<bool()>& condition) const
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.hasExpired(patienceMs))
            throw std::runtime_error(what.toStdString() + " did not come");
        QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
}

} // namespace corv
