#include "UiFixture.h"

#include "App/interface.h"
#include "App/look.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QQmlContext>
#include <QQmlExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <cstdio>

namespace corv::test {
namespace {

// Before main() makes the application, as the program does it.
const bool scaled = [] {
    followScreenScale();
    return true;
}();

} // namespace

void UiFixture::prepare()
{
    // A home of its own: suites that run at the same time find nothing of each other's there.
    static const QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    QStandardPaths::setTestModeEnabled(true);
    QApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QApplication::setOrganizationDomain(QStringLiteral("corvenity.example"));
    QApplication::setApplicationName(QStringLiteral("Vistrel"));
    prepareInterface(*qApp);
}

UiFixture::UiFixture()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settingsFolder.path());
    // Unsaved work and unfinished jobs of an earlier test.
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir(data + "/recovery").removeRecursively();
    QDir(data + "/jobs").removeRecursively();
    makeEngine();
}

void UiFixture::makeEngine()
{
    m_engine = std::make_unique<QQmlApplicationEngine>();
    m_engine->rootContext()->setContextProperty(QStringLiteral("applicationDirPath"),
                                                QApplication::applicationDirPath());
}

bool UiFixture::reload()
{
    m_engine.reset();
    makeEngine();
    return load();
}

UiFixture::~UiFixture()
{
    if (QTest::currentTestFailed()) {
        const QStringList messages = m_log.messages();
        for (const QString& message : messages)
            std::fprintf(stderr, "    %s\n", qPrintable(message));
    }
    for (QWidget* widget : QApplication::topLevelWidgets())
        widget->close();
    m_engine.reset();
}

bool UiFixture::load(const QUrl& document)
{
    m_engine->load(document);
    return waitForRoot();
}

bool UiFixture::loadText(const QByteArray& document)
{
    m_engine->loadData(document, QUrl(QStringLiteral("qrc:/TestDocument.qml")));
    return waitForRoot();
}

bool UiFixture::waitForRoot()
{
    if (m_engine->rootObjects().isEmpty())
        return false;
    m_root = m_engine->rootObjects().constFirst();
    return !window() || QTest::qWaitForWindowActive(window());
}

bool UiFixture::activate() const
{
    window()->requestActivate();
    return QTest::qWaitForWindowActive(window());
}

QQuickWindow* UiFixture::window() const
{
    return qobject_cast<QQuickWindow*>(m_root);
}

QStringList UiFixture::scriptErrors() const
{
    QStringList errors;
    for (const QString& message : m_log.messages()) {
        const bool ofScript =
            message.contains(QLatin1String("qrc:/")) || message.contains(QLatin1String("Error:"));
        const bool complaint = message.contains(QLatin1String("Error")) ||
                               message.contains(QLatin1String("Unable to assign")) ||
                               message.contains(QLatin1String("Binding loop")) ||
                               message.contains(QLatin1String("not defined")) ||
                               message.contains(QLatin1String("Cannot open"));
        if (ofScript && complaint)
            errors.append(message);
    }
    return errors;
}

namespace {

bool isShown(QObject* object)
{
    if (auto* item = qobject_cast<QQuickItem*>(object))
        return item->isVisible() && item->window() && item->window()->isVisible();
    if (auto* window = qobject_cast<QWindow*>(object))
        return window->isVisible();
    return true;
}

} // namespace

QObject* UiFixture::findInItems(QQuickItem* from, const QString& objectName, bool visibleOnly)
{
    if (from->objectName() == objectName && (!visibleOnly || isShown(from)))
        return from;
    for (QQuickItem* child : from->childItems()) {
        if (QObject* found = findInItems(child, objectName, visibleOnly))
            return found;
    }
    return nullptr;
}

QObject* UiFixture::findIn(QObject* from, const QString& objectName, bool visibleOnly)
{
    if (from->objectName() == objectName && (!visibleOnly || isShown(from)))
        return from;
    if (auto* item = qobject_cast<QQuickItem*>(from)) {
        if (QObject* found = findInItems(item, objectName, visibleOnly))
            return found;
    }
    if (auto* window = qobject_cast<QQuickWindow*>(from)) {
        if (QObject* found = findInItems(window->contentItem(), objectName, visibleOnly))
            return found;
    }
    for (QObject* child : from->children()) {
        if (QObject* found = findIn(child, objectName, visibleOnly))
            return found;
    }
    return nullptr;
}

QObject* UiFixture::find(const QString& objectName, QObject* from) const
{
    QObject* start = from ? from : m_root;
    QObject* shown = findIn(start, objectName, true);
    return shown ? shown : findIn(start, objectName, false);
}

QQuickItem* UiFixture::item(const QString& objectName, QObject* from) const
{
    return qobject_cast<QQuickItem*>(find(objectName, from));
}

QVariant UiFixture::get(const QString& objectName, const char* property) const
{
    QObject* object = find(objectName);
    return object ? object->property(property) : QVariant();
}

bool UiFixture::trigger(const QString& menuItem) const
{
    QObject* found = find(menuItem);
    return found && found->property("enabled").toBool() &&
           QMetaObject::invokeMethod(found, "trigger");
}

QVariant UiFixture::call(const char* function, const QVariantList& arguments) const
{
    QVariant result;
    QVariantList values = arguments;
    while (values.size() < 4)
        values.append(QVariant());
    const auto argument = [&](int index) {
        return index < arguments.size() ? Q_ARG(QVariant, values[index]) : QGenericArgument();
    };
    QMetaObject::invokeMethod(m_root, function, Q_RETURN_ARG(QVariant, result), argument(0),
                              argument(1), argument(2), argument(3));
    return result;
}

QVariant UiFixture::evaluate(const QString& expression) const
{
    QQmlExpression script(qmlContext(m_root), m_root, expression);
    bool undefined = false;
    const QVariant value = script.evaluate(&undefined);
    return undefined ? QVariant() : value;
}

namespace {

QPoint middle(QQuickItem* target)
{
    return target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint();
}

} // namespace

void UiFixture::click(QQuickItem* target, Qt::MouseButton button)
{
    // A window that has just been shown places its items when it is exposed, not before.
    if (!QTest::qWaitForWindowExposed(target->window()))
        qWarning("A click into a window that is not on the screen");
    QTest::mouseMove(target->window(), middle(target));
    QTest::mouseClick(target->window(), button, Qt::NoModifier, middle(target));
}

void UiFixture::hover(QQuickItem* target)
{
    QTest::mouseMove(target->window(), middle(target) - QPoint(1, 1));
    QTest::mouseMove(target->window(), middle(target));
}

void UiFixture::wheel(QQuickItem* target, int delta, Qt::KeyboardModifiers modifiers)
{
    const QPoint position = middle(target);
    QWheelEvent event(position, target->window()->mapToGlobal(position), QPoint(), QPoint(0, delta),
                      Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    // A view that scrolls ignores a second event of the same moment.
    event.setTimestamp(static_cast<ulong>(QDeadlineTimer::current().deadline()));
    QCoreApplication::sendEvent(target->window(), &event);
}

bool UiFixture::click(const QString& objectName) const
{
    QQuickItem* target = item(objectName);
    if (!target || !target->isVisible())
        return false;
    click(target);
    return true;
}

QQuickWindow* UiFixture::visibleWindow(const QString& objectName)
{
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        auto* quick = qobject_cast<QQuickWindow*>(window);
        if (quick && quick->isVisible() && quick->objectName() == objectName)
            return quick;
    }
    return nullptr;
}

namespace {

// The one that takes input: of several, the newest.
template <class Dialog>
Dialog* openDialog()
{
    if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget()))
        return dialog;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<Dialog*>(widget);
        if (dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

} // namespace

QMessageBox* UiFixture::messageBox()
{
    return openDialog<QMessageBox>();
}

QFileDialog* UiFixture::fileDialog()
{
    return openDialog<QFileDialog>();
}

bool UiFixture::dismissMessageBox()
{
    QMessageBox* box = messageBox();
    if (!box || !box->button(QMessageBox::Ok))
        return false;
    QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    return !box->isVisible();
}

QString UiFixture::questionAboutFile(const QString& path)
{
    QString question;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&question] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->button(QMessageBox::No) || !question.isEmpty())
            return;
        question = box->text();
        box->button(QMessageBox::No)->click();
    });
    answer.start(10);
    acceptFile(path);
    return question;
}

bool UiFixture::acceptFile(const QString& path)
{
    QFileDialog* dialog = fileDialog();
    if (!dialog)
        return false;
    const QFileInfo file(path);
    const bool folder = dialog->fileMode() == QFileDialog::Directory;
    dialog->setDirectory(folder ? path : file.absolutePath());
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (!name)
        return false;
    name->setText(folder ? path : file.fileName());
    QMetaObject::invokeMethod(dialog, "accept");
    return !dialog->isVisible();
}

void UiFixture::screenshot(const QString& name) const
{
    const QString folder = qEnvironmentVariable("VISTREL_SCREENSHOTS");
    if (folder.isEmpty() || !window())
        return;
    QDir().mkpath(folder);
    window()->grabWindow().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
}

} // namespace corv::test
