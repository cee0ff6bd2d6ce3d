#include "Shell/Shortcut.h"

#include <QSignalSpy>
#include <QtTest>

class ShortcutTest : public QObject
{
    Q_OBJECT

private slots:
    void firesOnceForAHeldKey();
    void anyReleaseReArms();
    void twoOfTheSameKeyBothFire();
    void comparesTheModifiers_data();
    void comparesTheModifiers();
    void takesWhatConvertsToAKey();
    void consumesNothing();

private:
    static void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                      bool repeat = false);
    static void release(int key, bool repeat = false);
};

namespace {

class Receiver : public QObject
{
public:
    int presses = 0;
    bool event(QEvent* event) override
    {
        presses += event->type() == QEvent::KeyPress ? 1 : 0;
        return QObject::event(event);
    }
};

Receiver& receiver()
{
    static Receiver instance;
    return instance;
}

} // namespace

void ShortcutTest::press(int key, Qt::KeyboardModifiers modifiers, bool repeat)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), repeat);
    QCoreApplication::sendEvent(&receiver(), &event);
}

void ShortcutTest::release(int key, bool repeat)
{
    QKeyEvent event(QEvent::KeyRelease, key, Qt::NoModifier, QString(), repeat);
    QCoreApplication::sendEvent(&receiver(), &event);
}

void ShortcutTest::firesOnceForAHeldKey()
{
    Shortcut shortcut;
    shortcut.setKey(QStringLiteral("Return"));
    QSignalSpy activated(&shortcut, &Shortcut::activated);
    QSignalSpy held(&shortcut, &Shortcut::pressedAndHold);
    press(Qt::Key_Return);
    for (int i = 0; i < 5; ++i) {
        release(Qt::Key_Return, true);
        press(Qt::Key_Return, Qt::NoModifier, true);
    }
    QCOMPARE(activated.count(), 1);
    QCOMPARE(held.count(), 0);
}

void ShortcutTest::anyReleaseReArms()
{
    Shortcut shortcut;
    shortcut.setKey(QStringLiteral("A"));
    QSignalSpy activated(&shortcut, &Shortcut::activated);
    press(Qt::Key_A);
    press(Qt::Key_B);
    press(Qt::Key_A);
    QCOMPARE(activated.count(), 1);
    release(Qt::Key_B);
    press(Qt::Key_A);
    QCOMPARE(activated.count(), 2);
}

void ShortcutTest::twoOfTheSameKeyBothFire()
{
    Shortcut first;
    Shortcut second;
    first.setKey(QStringLiteral("Esc"));
    second.setKey(QStringLiteral("Esc"));
    QSignalSpy firstActivated(&first, &Shortcut::activated);
    QSignalSpy secondActivated(&second, &Shortcut::activated);
    press(Qt::Key_Escape);
    QCOMPARE(firstActivated.count(), 1);
    QCOMPARE(secondActivated.count(), 1);
}

void ShortcutTest::comparesTheModifiers_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("pressed");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("fired");
    const auto row = [](const char* name, const char* key, int pressed, int modifiers, int fired) {
        QTest::newRow(name) << QString::fromLatin1(key) << pressed << modifiers << fired;
    };
    row("plain", "5", Qt::Key_5, Qt::NoModifier, 1);
    row("keypad", "5", Qt::Key_5, Qt::KeypadModifier, 0);
    row("control", "Ctrl+S", Qt::Key_S, Qt::ControlModifier, 1);
    row("control missing", "Ctrl+S", Qt::Key_S, Qt::NoModifier, 0);
    row("shift too much", "Ctrl+S", Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier, 0);
    row("a modifier alone", "Ctrl+S", Qt::Key_Control, Qt::ControlModifier, 0);
    row("alt alone", "Ctrl+S", Qt::Key_Alt, Qt::AltModifier, 0);
    row("empty", "", Qt::Key_S, Qt::NoModifier, 0);
}

void ShortcutTest::comparesTheModifiers()
{
    QFETCH(QString, key);
    QFETCH(int, pressed);
    QFETCH(int, modifiers);
    QFETCH(int, fired);
    Shortcut shortcut;
    shortcut.setKey(key);
    QSignalSpy activated(&shortcut, &Shortcut::activated);
    press(pressed, Qt::KeyboardModifiers(modifiers));
    QCOMPARE(activated.count(), fired);
}

void ShortcutTest::takesWhatConvertsToAKey()
{
    Shortcut shortcut;
    QSignalSpy changed(&shortcut, &Shortcut::keyChanged);
    shortcut.setKey(QStringLiteral("Return"));
    shortcut.setKey(QVariant::fromValue(QKeySequence(Qt::Key_Return)));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(shortcut.key().value<QKeySequence>(), QKeySequence(Qt::Key_Return));
    shortcut.setKey(QVariantMap());
    QCOMPARE(changed.count(), 2);
    QVERIFY(shortcut.key().value<QKeySequence>().isEmpty());
}

void ShortcutTest::consumesNothing()
{
    Shortcut shortcut;
    shortcut.setKey(QStringLiteral("N"));
    const int before = receiver().presses;
    press(Qt::Key_N);
    QCOMPARE(receiver().presses, before + 1);
}

QTEST_MAIN(ShortcutTest)
#include "ShortcutTest.moc"
