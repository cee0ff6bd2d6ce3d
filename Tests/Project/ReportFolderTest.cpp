#include "Project/ReportFolder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

using corv::ReportFolder;

/// The temporary folders of reports, in a folder for temporary files of their own.
class ReportFolderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aFolderGoesWithItsReport();
    void sweepsWhatNobodyUses_data();
    void sweepsWhatNobodyUses();
    void aFolderInUseByAnotherContainerStays();
    void aFolderWhoseLockIsFreeIsSwept();
    void aLinkIsNotFollowed();

private:
    QString makeFolder(const QString& name) const;

    std::unique_ptr<QTemporaryDir> m_temporary;
};

namespace {

// Above the highest number that the system gives.
const QString ofADeadProcess = QStringLiteral("vistrel-report-2147483000-aBcDeF");

} // namespace

void ReportFolderTest::init()
{
    m_temporary = std::make_unique<QTemporaryDir>();
    qputenv("TMPDIR", QFile::encodeName(m_temporary->path()));
}

void ReportFolderTest::cleanup()
{
    qunsetenv("TMPDIR");
}

QString ReportFolderTest::makeFolder(const QString& name) const
{
    const QString folder = m_temporary->filePath(name);
    QFile picture(folder + QStringLiteral("/generated_image_0.png"));
    if (!QDir().mkpath(folder) || !picture.open(QIODevice::WriteOnly) || picture.write("x") != 1)
        qFatal("no folder with a picture");
    return folder;
}

void ReportFolderTest::aFolderGoesWithItsReport()
{
    QString path;
    {
        const ReportFolder folder;
        QVERIFY(folder.isValid());
        path = folder.path();
        QVERIFY(path.startsWith(m_temporary->path()));
        ReportFolder::sweep();
        QVERIFY(QFileInfo(path).isDir());
    }
    QVERIFY(!QFileInfo::exists(path));
}

void ReportFolderTest::sweepsWhatNobodyUses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("stays");
    const QString running =
        QStringLiteral("vistrel-report-%1-aBcDeF").arg(QCoreApplication::applicationPid());
    QTest::newRow("its process was killed") << ofADeadProcess << false;
    QTest::newRow("its process runs") << running << true;
    QTest::newRow("its process is another user's") << QStringLiteral("vistrel-report-1-a") << true;
    QTest::newRow("names no process") << QStringLiteral("vistrel-report-aBcDeF") << true;
    QTest::newRow("names all processes") << QStringLiteral("vistrel-report--1-aBcDeF") << true;
    QTest::newRow("of another program") << QStringLiteral("x-report-2147483000-aBcDeF") << true;
}

void ReportFolderTest::sweepsWhatNobodyUses()
{
    QFETCH(QString, name);
    const QString folder = makeFolder(name);
    ReportFolder::sweep();
    QTEST(QFileInfo::exists(folder), "stays");
}

// There its process has a number that nobody has here.
void ReportFolderTest::aFolderInUseByAnotherContainerStays()
{
    const ReportFolder folder;
    const QString elsewhere = m_temporary->filePath(ofADeadProcess);
    QVERIFY(QDir().rename(folder.path(), elsewhere));
    ReportFolder::sweep();
    QVERIFY(QFileInfo(elsewhere).isDir());
    QVERIFY(QDir().rename(elsewhere, folder.path()));
}

void ReportFolderTest::aFolderWhoseLockIsFreeIsSwept()
{
    // Of a process that was killed a moment ago: the file is there, and not locked.
    const QString killed = makeFolder(ofADeadProcess);
    QFile lock(killed + QStringLiteral("/.vistrel-in-use"));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    lock.close();
    ReportFolder::sweep();
    QVERIFY(!QFileInfo::exists(killed));
}

void ReportFolderTest::aLinkIsNotFollowed()
{
    const QString elsewhere = makeFolder(QStringLiteral("elsewhere"));
    QVERIFY(QFile::link(elsewhere, m_temporary->filePath(ofADeadProcess)));
    ReportFolder::sweep();
    QVERIFY(QFile::exists(elsewhere + QStringLiteral("/generated_image_0.png")));
}

QTEST_GUILESS_MAIN(ReportFolderTest)
#include "ReportFolderTest.moc"
