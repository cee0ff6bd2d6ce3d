#include "Shell/Shortcut.h"
#include "Shell/HeldKey.h"

#include <QSignalSpy>
#include <QtTest>

class ShortcutTest : public QObject
{
    Q_OBJECT

private slots:
    void firesOnceForAHeldKey();
    void firesOnceForAHeldKeyWhoseRepeatsAreNotMarked();
    void repeatsOfAHeldKeyAreKnown_data();
    void repeatsOfAHeldKeyAreKnown();
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
    static void send(QEvent::Type type, quint32 code, ulong time);
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

// As the window system gives them: with the code of the key and the time.
void ShortcutTest::send(QEvent::Type type, quint32 code, ulong time)
{
    QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, code, 0, 0);
    event.setTimestamp(time);
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

// A release and a press of one time stamp that arrive apart.
void ShortcutTest::firesOnceForAHeldKeyWhoseRepeatsAreNotMarked()
{
    Shortcut shortcut;
    shortcut.setKey(QStringLiteral("Return"));
    QSignalSpy activated(&shortcut, &Shortcut::activated);
    send(QEvent::KeyPress, 36, 1000);
    for (ulong time = 1250; time < 1500; time += 30) {
        send(QEvent::KeyRelease, 36, time);
        send(QEvent::KeyPress, 36, time);
    }
    QCOMPARE(activated.count(), 1);
    send(QEvent::KeyRelease, 36, 1510);
    send(QEvent::KeyPress, 36, 1511);
    QCOMPARE(activated.count(), 2);
}

void ShortcutTest::repeatsOfAHeldKeyAreKnown_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<ulong>("time");
    QTest::addColumn<bool>("repeats");
    QTest::newRow("same time") << 57U << 2000UL << true;
    QTest::newRow("pressed again") << 57U << 2001UL << false;
    QTest::newRow("another key") << 58U << 2000UL << false;
}

void ShortcutTest::repeatsOfAHeldKeyAreKnown()
{
    QFETCH(quint32, code);
    QFETCH(ulong, time);
    QFETCH(bool, repeats);
    for (const QEvent::Type press : {QEvent::ShortcutOverride, QEvent::KeyPress}) {
        HeldKey held;
        send(QEvent::KeyPress, 57, 1000);
        QVERIFY(!held.repeats());
        send(QEvent::KeyRelease, 57, 2000);
        send(press, code, time);
        QCOMPARE(held.repeats(), repeats);
        send(press, 60, 3000);
        QVERIFY(!held.repeats());
        ShortcutTest::press(Qt::Key_N, Qt::NoModifier, true);
        QVERIFY(held.repeats());
        // Keys that a program makes have neither code nor time.
        release(Qt::Key_N);
        ShortcutTest::press(Qt::Key_N);
        QVERIFY(!held.repeats());
    }
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
