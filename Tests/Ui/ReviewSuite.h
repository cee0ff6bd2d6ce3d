#pragma once

#include "ReviewFixture.h"

#include <QObject>
#include <memory>

namespace corv::test {

/// A suite of the whole main window: each test has one of its own, as a new installation shows it.
class ReviewSuite : public QObject
{
    Q_OBJECT

protected:
    /// Ends the interface and starts another, with the settings of a new installation.
    void restart();

    QString title() const { return m_ui->window()->title(); }
    QVariant player(const char* property) const;
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;

    /// A video of six seconds and a log with points of interest at the first and the third.
    void openVideoAndLog();

    /// Of the playhead and of the selected point of interest, in milliseconds.
    int position() const;
    int selected() const;

    /// The quoted text was shown in a box of this title and kind, perhaps with its cause below, and
    /// is answered.
    static void expectBox(const QString& boxTitle, const QString& text, QMessageBox::Icon icon);

    std::unique_ptr<ReviewFixture> m_ui;

private slots:
    void initTestCase();
    void init();
    void cleanup();
};

} // namespace corv::test
