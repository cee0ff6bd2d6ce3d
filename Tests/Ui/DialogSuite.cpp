#include "DialogSuite.h"

namespace corv::test {

void DialogSuite::addRowsOfCancelling()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("clicked") << false;
    QTest::newRow("Escape") << true;
}

void DialogSuite::accept(bool byKey, const QString& button, Qt::KeyboardModifiers modifiers)
{
    if (byKey)
        m_host->press(Qt::Key_Return, modifiers);
    else
        m_host->click(button);
    verifyClosed(true);
}

void DialogSuite::cancel(bool byKey, const QString& button)
{
    if (byKey)
        m_host->press(Qt::Key_Escape);
    else
        m_host->click(button);
    verifyClosed(false);
}

void DialogSuite::verifyClosed(bool agreed)
{
    QTRY_VERIFY(!m_host->window()->isVisible());
    QCOMPARE(m_host->get("ok").toBool(), agreed);
}

void DialogSuite::verifyTabOrder(QStringList fields)
{
    m_host->click(fields.takeFirst());
    for (const QString& field : fields) {
        m_host->press(Qt::Key_Tab);
        QTRY_VERIFY2(m_host->item(field)->hasActiveFocus(), qPrintable(field));
    }
}

void DialogSuite::initTestCase()
{
    UiFixture::prepare();
}

void DialogSuite::init()
{
    m_host = std::make_unique<DialogHost>();
    QVERIFY(m_host->isLoaded());
}

void DialogSuite::cleanup()
{
    m_host.reset();
}

void DialogSuite::windowIsAsAnnounced_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("minimum");
    QTest::addColumn<QString>("colour");
    QTest::addColumn<int>("modality");
    QTest::addColumn<bool>("isDialog");
    for (const WindowLook& look : m_windows)
        QTest::newRow(look.row) << look.file << look.title << look.size << look.minimum
                                << look.colour << int(look.modality) << look.isDialog;
}

void DialogSuite::windowIsAsAnnounced()
{
    QFETCH(QString, file);
    QFETCH(QSize, size);
    QFETCH(QString, colour);
    QFETCH(bool, isDialog);
    QVERIFY(m_host->open(file));
    QQuickWindow* window = m_host->window();
    QTEST(window->title(), "title");
    if (size.height() == 0)
        size.setHeight(window->height());
    QTRY_COMPARE(window->size(), size);
    QTEST(window->minimumSize(), "minimum");
    if (!colour.isEmpty())
        QCOMPARE(window->color().name(), colour);
    QTEST(int(window->modality()), "modality");
    if (isDialog)
        QCOMPARE(window->flags() & Qt::WindowType_Mask, Qt::Dialog);
    QVERIFY(!m_host->get("ok").toBool());
    QCOMPARE(m_host->ui().scriptErrors(), QStringList());
    m_host->screenshot(file.chopped(4));
}

void DialogSuite::addRowsOfWindows() const
{
    QTest::addColumn<QString>("file");
    for (const WindowLook& look : m_windows)
        QTest::newRow(look.row) << look.file;
}

void DialogSuite::everyControlHasAName_data()
{
    addRowsOfWindows();
}

void DialogSuite::everyControlHasAName()
{
    QFETCH(QString, file);
    QVERIFY(m_host->open(file));
    QCOMPARE(m_host->namelessControls(), QStringList());
}

void DialogSuite::closingByTheFrameIsCancelling_data()
{
    addRowsOfWindows();
}

void DialogSuite::closingByTheFrameIsCancelling()
{
    QFETCH(QString, file);
    QVERIFY(m_host->open(file));
    m_host->window()->close();
    verifyClosed(false);
}

} // namespace corv::test
