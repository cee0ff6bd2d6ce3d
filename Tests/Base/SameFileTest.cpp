#include "Base/sameFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>

using namespace corv;

/// Whether a target would overwrite one of the sources.
class SameFileTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void findsAFileUnderAnyName_data();
    void findsAFileUnderAnyName();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void SameFileTest::initTestCase()
{
    for (const char* name : {"a.mp4", "b.mp4", "other.mp4"}) {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(QDir().mkpath(path("sub")));
    QVERIFY(QFile::link(path("b.mp4"), path("soft.mp4")));
    QCOMPARE(::link(QFile::encodeName(path("b.mp4")), QFile::encodeName(path("hard.mp4"))), 0);
    QVERIFY(QDir::setCurrent(m_folder.path()));
}

void SameFileTest::findsAFileUnderAnyName_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("expected");
    QTest::newRow("the same name") << path("a.mp4") << true;
    QTest::newRow("relative") << "b.mp4" << true;
    QTest::newRow("through a folder") << path("sub/../a.mp4") << true;
    QTest::newRow("symbolic link") << path("soft.mp4") << true;
    QTest::newRow("hard link") << path("hard.mp4") << true;
    QTest::newRow("another file") << path("other.mp4") << false;
    QTest::newRow("no file") << path("new.mp4") << false;
    QTest::newRow("no name") << QString() << false;
}

void SameFileTest::findsAFileUnderAnyName()
{
    QFETCH(QString, target);
    QTEST(isOneOfFiles(target, {path("missing.mp4"), path("a.mp4"), path("b.mp4")}), "expected");
}

QTEST_GUILESS_MAIN(SameFileTest)
#include "SameFileTest.moc"
