#pragma once

#include "Support/MessageLog.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QUrl>
#include <QVariant>
#include <QtTest>
#include <memory>

namespace corv::test {

/// The real interface in a real window, for suites that drive it by input events: makes the engine,
/// loads a document of the compiled resources, and finds, clicks and answers what is on screen. A
/// test that fails has the diagnostics of the program printed.
/// Settings live in a folder of the fixture's own, so each fixture starts as a new installation.
///
///     UiFixture ui;
///     QVERIFY(ui.load());
///     ui.trigger("openProjectMenuItem");
///     QTRY_VERIFY(ui.fileDialog());
///
/// Call `UiFixture::prepare()` once in `initTestCase`.
class UiFixture
{
public:
    /// Application names, isolated paths and the native types. Once per process.
    static void prepare();

    UiFixture();
    ~UiFixture();
    UiFixture(const UiFixture&) = delete;
    UiFixture& operator=(const UiFixture&) = delete;

    /// Loads the document and, if its root is a window, waits until it is active. False on failure.
    bool load(const QUrl& document = QUrl(QStringLiteral("qrc:/main.qml")));

    /// Ends the interface and starts it anew with the settings that it left behind.
    bool reload();

    /// The same for a document of the test's own, which is beside the others.
    bool loadText(const QByteArray& document);

    /// Makes the main window active again, for instance after a dialog: only the active window gets
    /// keys.
    bool activate() const;

    QQmlApplicationEngine& engine() { return *m_engine; }
    QObject* root() const { return m_root; }
    QQuickWindow* window() const;

    /// Everything logged since the fixture was made.
    MessageLog& log() { return m_log; }

    /// Complaints of the script engine so far: errors, undefined references, binding loops.
    QStringList scriptErrors() const;

    /// The object of this objectName below `from` (the root by default): a visible one before
    /// others, whether it is in the object tree or only in the item tree. Null if there is none.
    QObject* find(const QString& objectName, QObject* from = nullptr) const;
    QQuickItem* item(const QString& objectName, QObject* from = nullptr) const;
    QVariant get(const QString& objectName, const char* property) const;

    /// Runs a menu item by its objectName, as a click in the menu does: false if it is disabled.
    bool trigger(const QString& menuItem) const;

    /// Calls a function of the root.
    QVariant call(const char* function, const QVariantList& arguments = {}) const;

    /// Evaluates an expression in the root's scope.
    QVariant evaluate(const QString& expression) const;

    /// Mouse and wheel at the middle of an item, in the window that shows it.
    static void click(QQuickItem* target, Qt::MouseButton button = Qt::LeftButton);
    static void hover(QQuickItem* target);
    static void wheel(QQuickItem* target, int delta,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    bool click(const QString& objectName) const;

    /// The visible secondary window of this name, null if there is none.
    static QQuickWindow* visibleWindow(const QString& objectName);

    /// The message box, the file dialog that is open now; null if none is.
    static QMessageBox* messageBox();
    static QFileDialog* fileDialog();

    /// Presses "Ok" on the open message box; false if none is open.
    static bool dismissMessageBox();

    /// Picks one name in the open file dialog and accepts it; false if none is open or the dialog
    /// stays. `path` is absolute.
    static bool acceptFile(const QString& path);

    /// Picks one name in the open file dialog, where the file exists: answers the question whether
    /// to replace it with "No" and gives its text. Empty if the dialog asked nothing.
    static QString questionAboutFile(const QString& path);

    /// Saves the window's picture to the folder named by VISTREL_SCREENSHOTS, if that is set.
    void screenshot(const QString& name) const;

private:
    void makeEngine();
    bool waitForRoot();
    static QObject* findIn(QObject* from, const QString& objectName, bool visibleOnly);
    static QObject* findInItems(QQuickItem* from, const QString& objectName, bool visibleOnly);

    QTemporaryDir m_settingsFolder;
    MessageLog m_log;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QObject* m_root = nullptr;
};

} // namespace corv::test
