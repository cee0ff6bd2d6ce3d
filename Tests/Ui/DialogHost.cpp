#include "DialogHost.h"

#include <QAccessible>
#include <QDir>
#include <QSignalSpy>

namespace corv::test {

DialogHost::DialogHost()
{
    m_loaded = m_ui.load(QUrl::fromLocalFile(QStringLiteral(VISTREL_DIALOG_HOST)));
}

QObject* DialogHost::make(const QString& fileName)
{
    m_object = m_ui.call("make", {fileName}).value<QObject*>();
    return m_object;
}

bool DialogHost::open(const QString& fileName)
{
    return make(fileName) && show();
}

bool DialogHost::show()
{
    // Rows and grids place their items with the first frame.
    QSignalSpy frame(window(), &QQuickWindow::frameSwapped);
    QMetaObject::invokeMethod(m_object, "show");
    return QTest::qWaitForWindowActive(window()) && (frame.count() > 0 || frame.wait());
}

QObject* DialogHost::part(const QString& objectName) const
{
    return m_ui.find(objectName, m_object);
}

QQuickItem* DialogHost::item(const QString& objectName) const
{
    return m_ui.item(objectName, m_object);
}

QString DialogHost::textOf(const QString& objectName) const
{
    QObject* found = part(objectName);
    return found ? found->property("text").toString() : QStringLiteral("(no such part)");
}

void DialogHost::setTextOf(const QString& objectName, const QString& text)
{
    part(objectName)->setProperty("text", text);
}

void DialogHost::click(const QString& objectName)
{
    QQuickItem* target = item(objectName);
    QVERIFY2(target, qPrintable(objectName));
    QTRY_VERIFY(target->width() > 0 && target->height() > 0);
    UiFixture::click(target);
}

void DialogHost::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window(), key, modifiers);
}

void DialogHost::type(const QString& objectName, const QString& text)
{
    click(objectName);
    QTRY_VERIFY(item(objectName)->hasActiveFocus());
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    for (const QChar character : text)
        QTest::keyClick(window(), character.toLatin1());
}

namespace {

void collectNameless(QAccessibleInterface* node, QStringList& nameless)
{
    const QAccessible::Role role = node->role();
    const bool control = role == QAccessible::Button || role == QAccessible::RadioButton ||
                         role == QAccessible::EditableText || role == QAccessible::ProgressBar ||
                         role == QAccessible::Graphic;
    if (control && node->text(QAccessible::Name).isEmpty())
        nameless.append(node->object() ? node->object()->objectName() : QString::number(role));
    for (int i = 0; i < node->childCount(); ++i)
        collectNameless(node->child(i), nameless);
}

} // namespace

QStringList DialogHost::namelessControls() const
{
    QStringList nameless;
    QAccessibleInterface* root = QAccessible::queryAccessibleInterface(window());
    if (!root || root->childCount() == 0)
        return {QStringLiteral("(the window shows nothing to a screen reader)")};
    collectNameless(root, nameless);
    return nameless;
}

QString DialogHost::dismissMessage()
{
    if (!QTest::qWaitFor([] { return UiFixture::messageBox() != nullptr; }))
        return {};
    const QString text = UiFixture::messageBox()->text();
    return UiFixture::dismissMessageBox() ? text : QStringLiteral("(does not close)");
}

void DialogHost::screenshot(const QString& name) const
{
    const QString folder = qEnvironmentVariable("VISTREL_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QDir().mkpath(folder);
    QQuickWindow* shown = window() ? window() : m_ui.window();
    // What was never drawn cannot be grabbed.
    if (QTest::qWaitForWindowExposed(shown))
        shown->grabWindow().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
}

} // namespace corv::test
