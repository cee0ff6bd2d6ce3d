#include "ReviewSuite.h"

#include <QSettings>
#include <QTextDocumentFragment>

using namespace corv::test;

namespace {

const QString oddName = QStringLiteral("R&D <b>site & <12>");

/// What the texts below an item with this part in them are drawn from.
QString markupIn(QQuickItem* item, const QString& part)
{
    const QString markup = item->property("text").toString();
    if (item->inherits("QQuickText") && markup.contains(part))
        return markup;
    for (QQuickItem* child : item->childItems()) {
        const QString below = markupIn(child, part);
        if (!below.isEmpty())
            return below;
    }
    return {};
}

} // namespace

/// Names of pilots in the menus, whose texts are markup: as they were given.
class MenuNamesTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void recentProjectsHaveTheirNames();
    void undoNamesThePointOfInterest();

private:
    QList<QQuickWindow*> menus() const;
    bool open(Qt::Key letter) const;
    QString shownEntry(const QString& part) const;
    bool closeAll() const;
};

QList<QQuickWindow*> MenuNamesTest::menus() const
{
    QList<QQuickWindow*> shown;
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        auto* const quick = qobject_cast<QQuickWindow*>(window);
        if (quick && quick->isVisible() && quick != m_ui->window())
            shown.append(quick);
    }
    return shown;
}

bool MenuNamesTest::open(Qt::Key letter) const
{
    QTest::keyPress(m_ui->window(), Qt::Key_Alt, Qt::AltModifier);
    QTest::keyPress(m_ui->window(), letter, Qt::AltModifier);
    return QTest::qWaitFor([this] { return !menus().isEmpty(); }) &&
           QTest::qWaitForWindowExposed(menus().constLast());
}

QString MenuNamesTest::shownEntry(const QString& part) const
{
    QString markup;
    for (QQuickWindow* menu : menus())
        markup += markupIn(menu->contentItem(), part);
    return QTextDocumentFragment::fromHtml(markup).toPlainText();
}

bool MenuNamesTest::closeAll() const
{
    return QTest::qWaitFor([this] {
        const QList<QQuickWindow*> open = menus();
        if (!open.isEmpty())
            QTest::keyPress(open.constLast(), Qt::Key_Escape);
        return open.isEmpty();
    });
}

void MenuNamesTest::recentProjectsHaveTheirNames()
{
    QSettings().setValue("recentProjects/paths", QStringList{"/nowhere/" + oddName + ".ecor"});
    QVERIFY(m_ui->reload());
    QVERIFY(open(Qt::Key_F));
    QTest::keyPress(menus().constLast(), Qt::Key_R);
    QTRY_COMPARE(shownEntry("site"), oddName);
    QVERIFY(closeAll());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void MenuNamesTest::undoNamesThePointOfInterest()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 1000, name: '" + oddName + "'}])");
    key(Qt::Key_PageDown);
    QTRY_COMPARE(selected(), 1000);
    key(Qt::Key_X);
    QTRY_VERIFY(m_ui->get("undoMenuItem", "enabled").toBool());
    QVERIFY(open(Qt::Key_R));
    QTRY_COMPARE(shownEntry("site"), "Undo delete '" + oddName + '\'');
    QVERIFY(closeAll());
    // A screen reader gets it as it is.
    QCOMPARE(
        m_ui->evaluate("mainWindow.menuBar.plainText(mainWindow.menuBar.menus[1].items[0].text)")
            .toString(),
        "Undo delete '" + oddName + '\'');
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(MenuNamesTest)
#include "MenuNamesTest.moc"
