#pragma once

#include <QObject>

namespace corv {

/// Says when a window of the program opens: a menu, a list, a dialog. What explains the window
/// below it, as tool tips do, leaves then. Interface thread.
class OpenedWindows : public QObject
{
    Q_OBJECT

public:
    explicit OpenedWindows(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void opened();
};

} // namespace corv
