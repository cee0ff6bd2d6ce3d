#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>

namespace corv {

/// How much of a window lies below the part of its screen that a desk leaves to windows. On a small
/// screen that part is lower than a window has to be, and nothing is to be put behind its end.
/// Interface thread.
class HiddenPart : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject* window READ window WRITE setWindow)
    Q_PROPERTY(int height READ height NOTIFY heightChanged)

public:
    using QObject::QObject;

    QObject* window() const { return m_window; }

    /// Not owned; once.
    void setWindow(QObject* window);

    /// In device-independent pixels; 0 if all of the window can be seen.
    int height() const { return m_height; }

signals:
    void heightChanged();

private:
    void watchScreen(QScreen* screen);
    void measure();

    QPointer<QWindow> m_window;
    QPointer<QScreen> m_screen;
    int m_height = 0;
};

} // namespace corv
