#include "ReviewSuite.h"

#include <QSignalSpy>

using namespace corv::test;

/// A dialog that waits for its answer: no key that the window behind it gets works there, whatever
/// kind of key it is and whatever kind of dialog.
class BlockedKeysTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void noKeyPassesThrough_data();
    void noKeyPassesThrough();
    void noneBeforeTheDialogHasTheKeyboard_data() { noKeyPassesThrough_data(); }
    void noneBeforeTheDialogHasTheKeyboard();
    void theDialogGetsTheKeyboardBack_data();
    void theDialogGetsTheKeyboardBack();
    void theImporterGetsTheKeyboardFromItsFolderDialog();

private:
    static QWindow* dialog();
    void open(const QString& opening) const;
    void pressAll() const;
};

/// The window in front that blocks others.
QWindow* BlockedKeysTest::dialog()
{
    QWindow* const modal = QGuiApplication::modalWindow();
    return modal && modal->isVisible() && modal->isExposed() ? modal : nullptr;
}

void BlockedKeysTest::open(const QString& opening) const
{
    if (QObject* const named = m_ui->find(opening))
        QMetaObject::invokeMethod(named, "open");
    else
        m_ui->evaluate(opening);
}

/// Those of the tools, of the menus, of the keys without a control, and of the focused item.
void BlockedKeysTest::pressAll() const
{
    QWindow* const window = m_ui->window();
    for (const int key : {Qt::Key_N, Qt::Key_Space, Qt::Key_Right, Qt::Key_L, Qt::Key_Delete,
                          Qt::Key_Return, Qt::Key_F11})
        QTest::keyClick(window, static_cast<Qt::Key>(key));
    for (const int key : {Qt::Key_W, Qt::Key_Z, Qt::Key_Right})
        QTest::keyClick(window, static_cast<Qt::Key>(key), Qt::ControlModifier);
    QTest::keyClick(window, Qt::Key_F, Qt::AltModifier);
}

void BlockedKeysTest::noKeyPassesThrough_data()
{
    QTest::addColumn<QString>("opening");
    QTest::newRow("file dialog") << "goSaveProjectAs()";
    QTest::newRow("folder dialog") << "locateRecoveryDialog";
    QTest::newRow("message box") << "displayErrorDialog('Title', 'Text')";
    QTest::newRow("question") << "question.ask('Title', 'Text', function() {})";
    QTest::newRow("Export operation") << "showVideoExport()";
    QTest::newRow("edit a point of interest")
        << "timelineContent.selectPoi(timelineContent.getPOIs()[0].time), editSelectedPoi()";
    QTest::newRow("flight names") << "editFlightProperties()";
    QTest::newRow("export of a video") << "windows.openVideoExport()";
    QTest::newRow("importer") << "goExploreRemovableDevices()";
    QTest::newRow("about") << "windows.openPlain('AboutWindow.qml')";
    QTest::newRow("new version") << "launchUpdateWindow('9.9.9.9', 'Notes')";
}

void BlockedKeysTest::noKeyPassesThrough()
{
    QFETCH(QString, opening);
    QVERIFY(m_ui->openVideo());
    QTest::keyClick(m_ui->window(), Qt::Key_N);
    const QStringList pois = m_ui->poiNames();
    QCOMPARE(pois.size(), 1); // keys do work before
    QVERIFY(!dialog());
    open(opening);
    QTRY_VERIFY(dialog());
    const QWindow* const opened = dialog();

    pressAll();
    QVERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->poiNames(), pois);
    QCOMPARE(player("playing").toBool(), false);
    QCOMPARE(player("currentFrameIndex").toInt(), 0);
    QCOMPARE(dialog(), opened);
    QVERIFY(m_ui->window()->visibility() != QWindow::FullScreen);
    QVERIFY(!QGuiApplication::focusWindow() ||
            QGuiApplication::focusWindow()->type() != Qt::Popup); // no menu is open
}

/// A quick hand types on while the window system still brings the dialog: the window behind it has
/// the keyboard, and all its shortcuts match.
void BlockedKeysTest::noneBeforeTheDialogHasTheKeyboard()
{
    QFETCH(QString, opening);
    QVERIFY(m_ui->openVideo());
    QTest::keyClick(m_ui->window(), Qt::Key_N);
    QCOMPARE(m_ui->poiNames().size(), 1);
    QVERIFY(m_ui->activate());
    open(opening);
    QVERIFY(QGuiApplication::modalWindow());
    QCOMPARE(QGuiApplication::focusWindow(), m_ui->window());
    // The first one without a second key, which would give the dialog time.
    QTest::keyClick(m_ui->window(), Qt::Key_F11);
    for (const int key : {Qt::Key_W, Qt::Key_Z})
        QTest::keyClick(m_ui->window(), static_cast<Qt::Key>(key), Qt::ControlModifier);
    QVERIFY(m_ui->window()->visibility() != QWindow::FullScreen);
    QVERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->poiNames().size(), 1);
    QTRY_VERIFY(dialog());
}

// Qt itself refuses the keyboard to a window that an application-modal one blocks.
void BlockedKeysTest::theDialogGetsTheKeyboardBack_data()
{
    QTest::addColumn<QString>("opening");
    QTest::newRow("edit a point of interest")
        << "timelineContent.selectPoi(timelineContent.getPOIs()[0].time), editSelectedPoi()";
    QTest::newRow("export of a video") << "windows.openVideoExport()";
    QTest::newRow("importer") << "goExploreRemovableDevices()";
}

/// Where the keyboard follows the pointer, it comes to the blocked window with the pointer.
void BlockedKeysTest::theDialogGetsTheKeyboardBack()
{
    QFETCH(QString, opening);
    QVERIFY(m_ui->openVideo());
    QTest::keyClick(m_ui->window(), Qt::Key_N);
    open(opening);
    QTRY_VERIFY(dialog());
    QWindow* const opened = dialog();
    QVERIFY(QTest::qWaitForWindowActive(opened));
    QTRY_COMPARE(QGuiApplication::focusWindow(), opened);
    QSignalSpy moves(qGuiApp, &QGuiApplication::focusWindowChanged);
    m_ui->window()->requestActivate();
    QTRY_VERIFY(moves.size() >= 2); // there and back
    QTRY_COMPARE(QGuiApplication::focusWindow(), opened);
}

void BlockedKeysTest::theImporterGetsTheKeyboardFromItsFolderDialog()
{
    m_ui->call("goExploreRemovableDevices");
    QTRY_VERIFY(dialog());
    QWindow* const importer = dialog();
    QVERIFY(QTest::qWaitForWindowActive(importer));
    UiFixture::click(m_ui->item("browseLogsButton", importer));
    QTRY_VERIFY(dialog() && dialog() != importer);
    QVERIFY(QTest::qWaitForWindowActive(dialog()));
    UiFixture::fileDialog()->reject();
    m_ui->window()->requestActivate();
    QTRY_VERIFY(!UiFixture::fileDialog());
    QTRY_COMPARE(QGuiApplication::focusWindow(), importer);
    QTest::qWait(100);
    QCOMPARE(QGuiApplication::focusWindow(), importer);
}

QTEST_MAIN(BlockedKeysTest)
#include "BlockedKeysTest.moc"
