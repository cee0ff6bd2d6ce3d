#include "ReviewFixture.h"

#include <QDesktopServices>
#include <QPointer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <memory>

using namespace corv::test;

namespace {

// Twice this, for two seeds; where every access to memory is watched, ten thousand in all.
#ifdef __SANITIZE_ADDRESS__
constexpr int usualSteps = 5000;
#else
constexpr int usualSteps = 2500;
#endif

} // namespace

/// Thousands of clicks, keys and wheel steps at random, with a flight open: nothing may crash, and
/// no script may fail but where it is known to. VISTREL_MONKEY_STEPS makes it longer, and
/// VISTREL_MONKEY_SEED adds a row with another seed.
class MonkeyTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void survivesAnything_data();
    void survivesAnything();

public slots:
    void swallow(const QUrl&) {}

private:
    void step();
    void click();
    void key();
    void wheel();
    void answerDialogs();
    QQuickWindow* anyWindow();
    int upTo(int bound) { return static_cast<int>(m_random.bounded(bound)); }

    QRandomGenerator m_random;
    std::unique_ptr<ReviewFixture> m_ui;
};

void MonkeyTest::initTestCase()
{
    UiFixture::prepare();
    // The manual is not opened a hundred times.
    QDesktopServices::setUrlHandler("file", this, "swallow");
}

void MonkeyTest::survivesAnything_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::newRow("first") << 1u;
    QTest::newRow("second") << 20260601u;
    if (qEnvironmentVariableIsSet("VISTREL_MONKEY_SEED"))
        QTest::newRow("chosen") << qgetenv("VISTREL_MONKEY_SEED").toUInt();
}

QQuickWindow* MonkeyTest::anyWindow()
{
    QVector<QQuickWindow*> windows;
    const QWindowList all = QGuiApplication::topLevelWindows();
    for (QWindow* window : all) {
        auto* quick = qobject_cast<QQuickWindow*>(window);
        if (quick && quick->isVisible() && quick->width() > 0 && quick->height() > 0)
            windows.append(quick);
    }
    return upTo(3) || windows.isEmpty() ? m_ui->window() : windows[upTo(windows.size())];
}

void MonkeyTest::click()
{
    // A press can end a menu's window.
    const QPointer<QQuickWindow> window = anyWindow();
    const QPoint place(upTo(window->width()), upTo(window->height()));
    const auto button = upTo(8) ? Qt::LeftButton : Qt::RightButton;
    QTest::mouseMove(window, place);
    if (upTo(10) == 0) {
        QTest::mouseDClick(window, button, Qt::NoModifier, place);
        return;
    }
    QTest::mousePress(window, button, Qt::NoModifier, place);
    if (!window)
        return;
    if (upTo(4) == 0) {
        const QPoint other(upTo(window->width()), upTo(window->height()));
        QTest::mouseMove(window, other);
        QTest::mouseRelease(window, button, Qt::NoModifier, other);
    } else {
        QTest::mouseRelease(window, button, Qt::NoModifier, place);
    }
}

void MonkeyTest::key()
{
    static const QVector<Qt::Key> keys{
        Qt::Key_Home,   Qt::Key_Left,   Qt::Key_Space, Qt::Key_Right,     Qt::Key_End,
        Qt::Key_N,      Qt::Key_X,      Qt::Key_E,     Qt::Key_M,         Qt::Key_Return,
        Qt::Key_Escape, Qt::Key_Tab,    Qt::Key_Up,    Qt::Key_Down,      Qt::Key_5,
        Qt::Key_Enter,  Qt::Key_Delete, Qt::Key_Minus, Qt::Key_Backspace, Qt::Key_F,
        Qt::Key_J,      Qt::Key_K,      Qt::Key_L,     Qt::Key_PageUp,    Qt::Key_PageDown,
        Qt::Key_Plus,   Qt::Key_0,      Qt::Key_Z,     Qt::Key_1,         Qt::Key_F7,
        Qt::Key_F8,     Qt::Key_F11};
    static const QVector<Qt::Key> commands{Qt::Key_N, Qt::Key_L, Qt::Key_O, Qt::Key_S,
                                           Qt::Key_C, Qt::Key_U, Qt::Key_Z};
    const QPointer<QQuickWindow> window = anyWindow();
    const bool isCommand = upTo(8) == 0;
    const Qt::Key key = isCommand ? commands[upTo(commands.size())] : keys[upTo(keys.size())];
    const auto modifier = isCommand ? Qt::ControlModifier : Qt::NoModifier;
    QTest::keyPress(window, key, modifier);
    if (window)
        QTest::keyRelease(window, key, modifier);
}

void MonkeyTest::wheel()
{
    QQuickItem* target = upTo(3) ? m_ui->item("timelineContent") : m_ui->window()->contentItem();
    UiFixture::wheel(target, upTo(2) ? 120 : -120, upTo(2) ? Qt::NoModifier : Qt::ControlModifier);
}

void MonkeyTest::answerDialogs()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (widget->isVisible())
            widget->close();
    }
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow* window : windows) {
        if (window != m_ui->window() && window->isVisible() && window->inherits("QQuickWindow"))
            window->close();
    }
    m_ui->window()->show();
}

void MonkeyTest::step()
{
    switch (upTo(10)) {
    case 0:
    case 1:
    case 2:
        key();
        break;
    case 3:
    case 4:
        wheel();
        break;
    default:
        click();
    }
    QCoreApplication::processEvents();
}

void MonkeyTest::survivesAnything()
{
    QFETCH(quint32, seed);
    m_random.seed(seed);
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    auto* windows = m_ui->evaluate("secondaryWindows").value<QObject*>();
    QSignalSpy unitsChosen(windows, SIGNAL(unitsChosen(bool)));
    QVERIFY(unitsChosen.isValid());
    // Leaving is left out, or it would be over soon.
    m_ui->find("exitMenuItem")->setProperty("enabled", false);
    const int steps = qEnvironmentVariableIsSet("VISTREL_MONKEY_STEPS")
                          ? qEnvironmentVariableIntValue("VISTREL_MONKEY_STEPS")
                          : usualSteps;
    for (int index = 0; index < steps; ++index) {
        if (index % 400 == 0) {
            answerDialogs();
            m_ui->find("tabsContainer")->setProperty("currentIndex", index / 400 % 2);
            if (!m_ui->hasVideo()) {
                QVERIFY(m_ui->openVideo());
                QVERIFY(m_ui->importLog());
            }
        }
        if (index % 20 == 0)
            answerDialogs();
        step();
    }
    answerDialogs();
    QVERIFY(m_ui->window()->isVisible());
    QStringList unexpected;
    const QStringList errors = m_ui->scriptErrors();
    for (const QString& error : errors) {
        // The controls' own documents are not ours. Of ours, keys of two windows call what their
        // buttons do not have.
        if (error.contains("qrc:/") && !error.contains("pressButton"))
            unexpected.append(error);
    }
    // Units that are chosen in the settings are written to a member that the tab does not have.
    const QStringList missing =
        unexpected.filter(QRegularExpression("^qrc:/main\\.qml:\\d+: TypeError: Value is undefined "
                                             "and could not be converted to an object"));
    QVERIFY(missing.size() <= unitsChosen.count());
    for (const QString& error : missing)
        unexpected.removeOne(error);
    QCOMPARE(unexpected.join("\n"), QString());
    m_ui.reset();
}

QTEST_MAIN(MonkeyTest)
#include "MonkeyTest.moc"
