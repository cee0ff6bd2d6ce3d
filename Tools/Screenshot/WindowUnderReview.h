#pragma once

#include <QImage>
#include <QPointF>
#include <QQmlApplicationEngine>
#include <QString>
#include <QTime>
#include <functional>

class QQuickWindow;

namespace corv {

class VideoPlayer;

/// The program's real window, driven from outside to be photographed. Interface thread.
class WindowUnderReview
{
public:
    /// Loads the interface; throws std::runtime_error if it cannot be loaded.
    WindowUnderReview();

    QQuickWindow* window() const { return m_window; }

    /// Opens a project or a video, as if it had been named on the command line, and waits until the
    /// video, its log and the thumbnails are there. Throws std::runtime_error with what is missing
    /// after two minutes.
    void open(const QString& file);

    /// Plays from a second before `moment` and returns as soon as the picture has reached it, still
    /// playing.
    void playUpTo(const QTime& moment);

    /// The moment of the first point of interest; the middle of the flight where there is none.
    QTime mostInterestingMoment() const;

    /// The value of a script expression as the root document sees its names.
    QVariant evaluate(const QString& expression) const;

    /// What the main window shows now.
    QImage picture() const;

    /// What another window shows once it has drawn all of it: pictures that are painted later than
    /// the window appears included. Throws std::runtime_error if it does not come to rest.
    QImage pictureAtRest(QQuickWindow* window) const;

    /// Shows one moment of the flight, paused.
    void showMoment(const QTime& moment);

    /// The visible window of this objectName; throws std::runtime_error if none appears.
    QQuickWindow* waitForWindow(const QString& objectName) const;

    /// A click of the left button, at a position of the main window.
    void click(const QPointF& position) const;

    /// Runs the event loop until the condition holds; throws std::runtime_error with `what` after
    /// two minutes.
    void waitFor(const QString& what, const std::function<bool()>& condition) const;

private:
    QQmlApplicationEngine m_engine;
    QObject* m_root = nullptr;
    QQuickWindow* m_window = nullptr;
    VideoPlayer* m_player = nullptr;
};

} // namespace corv
