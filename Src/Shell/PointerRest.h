#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QTimer>
#include <QWindow>

/// An interface type that says whether the pointer has been still over a window for a while, and
/// that the keys are about to be taken from one control to another. It consumes nothing. Interface
/// thread.
class PointerRest : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QWindow* window READ window WRITE setWindow NOTIFY windowChanged)
    Q_PROPERTY(bool watching READ isWatching WRITE setWatching NOTIFY watchingChanged)
    Q_PROPERTY(int restMs READ restMs WRITE setRestMs NOTIFY restMsChanged)
    Q_PROPERTY(bool resting READ isResting NOTIFY restingChanged)
    Q_PROPERTY(QPointF position READ position NOTIFY positionChanged)

public:
    explicit PointerRest(QObject* parent = nullptr);

    /// Not owned.
    QWindow* window() const { return m_window; }
    void setWindow(QWindow* window);

    /// Off, as at first, the pointer counts as moving.
    bool isWatching() const { return m_isWatching; }
    void setWatching(bool watching);

    /// How long it has to be still, in milliseconds.
    int restMs() const { return m_timer.interval(); }
    void setRestMs(int ms);

    bool isResting() const { return m_isResting; }

    /// The last position of the pointer, in the window; (-1, -1) before its first move.
    QPointF position() const { return m_position; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void windowChanged();
    void watchingChanged();
    void restMsChanged();
    void restingChanged();
    void positionChanged();
    void tabPressed();

private:
    void moved();
    void setResting(bool resting);

    QPointer<QWindow> m_window;
    QTimer m_timer;
    QPointF m_position{-1, -1};
    bool m_isWatching = false;
    bool m_isResting = false;
};
