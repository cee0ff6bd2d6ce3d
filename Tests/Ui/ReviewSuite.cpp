#include "ReviewSuite.h"

namespace corv::test {

void ReviewSuite::initTestCase()
{
    UiFixture::prepare();
}

void ReviewSuite::init()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
}

void ReviewSuite::cleanup()
{
    m_ui.reset();
}

void ReviewSuite::restart()
{
    cleanup();
    init();
}

QVariant ReviewSuite::player(const char* property) const
{
    return m_ui->evaluate(QString("videoPlayer.") + property);
}

void ReviewSuite::key(int key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(m_ui->window(), static_cast<Qt::Key>(key), modifiers);
}

void ReviewSuite::openVideoAndLog()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    QTRY_VERIFY(!player("isBusy").toBool());
}

int ReviewSuite::position() const
{
    return QTime(0, 0).msecsTo(m_ui->evaluate("videoPlayer.timePosition").toTime());
}

int ReviewSuite::selected() const
{
    return QTime(0, 0).msecsTo(m_ui->evaluate("timelineContent.selectedPoiTime").toTime());
}

void ReviewSuite::expectBox(const QString& boxTitle, const QString& text, QMessageBox::Icon icon)
{
    QTRY_VERIFY(UiFixture::messageBox());
    QMessageBox* box = UiFixture::messageBox();
    QCOMPARE(box->windowTitle(), boxTitle);
    // The cause may follow.
    QVERIFY2(box->text() == text || box->text().startsWith(text + "\n\n"), qPrintable(box->text()));
    QCOMPARE(box->icon(), icon);
    QCOMPARE(box->standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(UiFixture::dismissMessageBox());
}

} // namespace corv::test
