#include "Shell/blockedKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>
#include <QtTest>
#include <memory>

using namespace corv;

namespace {

/// A window that counts the keys that reach it.
class KeyWindow : public QWindow
{
public:
    int keys = 0;

protected:
    bool event(QEvent* event) override
    {
        const bool isKey = event->type() == QEvent::KeyPress ||
                           event->type() == QEvent::KeyRelease ||
                           event->type() == QEvent::ShortcutOverride;
        keys += isKey ? 1 : 0;
        return QWindow::event(event);
    }
};

} // namespace

/// The filter alone: the window system seldom brings a key to a blocked window, but it does while a
/// dialog comes up, and Qt then looks for a shortcut of that window before it drops the key.
class BlockedKeysFilterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void keysOfABlockedWindowAreTaken_data();
    void keysOfABlockedWindowAreTaken();
    void withoutADialogKeysArrive();
    void aHiddenDialogBlocksNothing();
    void theDialogAndWhatBelongsToItHaveTheirKeys();
    void aPopupHasItsKeys();
    void anotherWindowIsBlockedByADialogOfAll();

private:
    /// Whether the key arrived at the window; one that did not is accepted, so that no shortcut
    /// takes it.
    static bool arrives(KeyWindow& window, QEvent::Type type = QEvent::ShortcutOverride);
    void showDialog(Qt::WindowModality modality) const;

    std::unique_ptr<KeyWindow> m_window;
    std::unique_ptr<KeyWindow> m_dialog;
};

void BlockedKeysFilterTest::initTestCase()
{
    dropKeysOfBlockedWindows(*qGuiApp);
}

void BlockedKeysFilterTest::init()
{
    m_dialog.reset();
    m_window = std::make_unique<KeyWindow>();
    m_window->show();
    m_dialog = std::make_unique<KeyWindow>();
    m_dialog->setTransientParent(m_window.get());
}

bool BlockedKeysFilterTest::arrives(KeyWindow& window, QEvent::Type type)
{
    window.keys = 0;
    QKeyEvent key(type, Qt::Key_W, Qt::ControlModifier);
    key.ignore();
    QCoreApplication::sendEvent(&window, &key);
    return window.keys > 0 || !key.isAccepted();
}

void BlockedKeysFilterTest::showDialog(Qt::WindowModality modality) const
{
    m_dialog->setModality(modality);
    m_dialog->show();
}

void BlockedKeysFilterTest::keysOfABlockedWindowAreTaken_data()
{
    QTest::addColumn<Qt::WindowModality>("modality");
    QTest::addColumn<QEvent::Type>("type");
    for (const auto modality : {Qt::WindowModal, Qt::ApplicationModal}) {
        const char* const name = modality == Qt::WindowModal ? "of the window" : "of all";
        QTest::addRow("override, %s", name) << modality << QEvent::ShortcutOverride;
        QTest::addRow("press, %s", name) << modality << QEvent::KeyPress;
        QTest::addRow("release, %s", name) << modality << QEvent::KeyRelease;
    }
}

void BlockedKeysFilterTest::keysOfABlockedWindowAreTaken()
{
    QFETCH(Qt::WindowModality, modality);
    QFETCH(QEvent::Type, type);
    showDialog(modality);
    QVERIFY(!arrives(*m_window, type));
}

void BlockedKeysFilterTest::withoutADialogKeysArrive()
{
    QVERIFY(arrives(*m_window));
    showDialog(Qt::NonModal);
    QVERIFY(arrives(*m_window));
}

void BlockedKeysFilterTest::aHiddenDialogBlocksNothing()
{
    showDialog(Qt::WindowModal);
    m_dialog->hide();
    QVERIFY(arrives(*m_window));
}

void BlockedKeysFilterTest::theDialogAndWhatBelongsToItHaveTheirKeys()
{
    showDialog(Qt::ApplicationModal);
    QVERIFY(arrives(*m_dialog));
    KeyWindow question;
    question.setTransientParent(m_dialog.get());
    question.show();
    QVERIFY(arrives(question));
}

void BlockedKeysFilterTest::aPopupHasItsKeys()
{
    showDialog(Qt::ApplicationModal);
    KeyWindow list;
    list.setFlags(Qt::Popup);
    list.show();
    QVERIFY(arrives(list));
}

void BlockedKeysFilterTest::anotherWindowIsBlockedByADialogOfAll()
{
    KeyWindow other;
    other.show();
    showDialog(Qt::WindowModal);
    QVERIFY(arrives(other));
    m_dialog->hide();
    showDialog(Qt::ApplicationModal);
    QVERIFY(!arrives(other));
}

QTEST_MAIN(BlockedKeysFilterTest)
#include "BlockedKeysFilterTest.moc"
