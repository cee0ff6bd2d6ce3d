#pragma once

#include "DialogHost.h"

#include <QList>
#include <QObject>
#include <QSize>
#include <memory>

namespace corv::test {

/// What a secondary window says of itself when it opens.
struct WindowLook
{
    const char* row; ///< the name of its rows
    QString file;
    QString title;
    QSize size; ///< a height of 0 is left to the window
    QSize minimum;
    QString colour; ///< empty where the window paints its own
    Qt::WindowModality modality = Qt::NonModal;
    bool isDialog = false; ///< of the kind that stays above its opener
};

/// A suite of secondary windows: each test has a host of its own, and what all windows have in
/// common is tested here, with a row for each that the suite hands over.
class DialogSuite : public QObject
{
    Q_OBJECT

public:
    explicit DialogSuite(QList<WindowLook> windows) : m_windows(std::move(windows)) {}

protected:
    /// The rows of a window that is left by its button or by a key: `byKey`.
    static void addRowsOfCancelling();

    /// Leaves the window at hand by Return, or by its button: it is gone, and says whether the user
    /// agreed.
    void accept(bool byKey, const QString& button,
                Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// The same by Escape, or by its other button.
    void cancel(bool byKey, const QString& button);

    /// The Tab key leads from the first of these fields of the window at hand to the last.
    void verifyTabOrder(QStringList fields);

    std::unique_ptr<DialogHost> m_host;

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void windowIsAsAnnounced_data();
    void windowIsAsAnnounced();
    void everyControlHasAName_data();
    void everyControlHasAName();
    void closingByTheFrameIsCancelling_data();
    void closingByTheFrameIsCancelling();

private:
    void addRowsOfWindows() const;
    void verifyClosed(bool agreed);

    QList<WindowLook> m_windows;
};

} // namespace corv::test
