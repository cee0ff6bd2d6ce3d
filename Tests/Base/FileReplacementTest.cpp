#include "Base/FileReplacement.h"
#include "Support/FullDisk.h"
#include "Support/PlainUser.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;
using namespace corv::test;
using InLockedFolder = FileReplacement::InLockedFolder;

Q_DECLARE_METATYPE(corv::Failure::Kind)
Q_DECLARE_METATYPE(corv::FileReplacement::InLockedFolder)

namespace {

constexpr QFile::Permissions everyoneMayRead(0x5555);
constexpr QFile::Permissions everyoneMayWrite(0x7777);

} // namespace

/// A file replaced atomically, and the reasons why it was not.
class FileReplacementTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void replacesContentsAndLeavesNothingBeside();
    void keepsTheEarlierFileWithoutCommit();
    void keepsTheEarlierFileOnAFullDisk_data();
    void keepsTheEarlierFileOnAFullDisk();
    void saysWhyAFileCannotBeWritten_data();
    void saysWhyAFileCannotBeWritten();
    void lockedFolderIsWrittenDirectlyOnlyIfAllowed_data();
    void lockedFolderIsWrittenDirectlyOnlyIfAllowed();
    void commitAddsPermissions();
    void followsASymbolicLink();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QByteArray contentsOf(const QString& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList entries() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void FileReplacementTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QFile::setPermissions(m_folder->path(), everyoneMayWrite));
    QVERIFY(replaceFile(path("a"), "earlier").ok());
}

void FileReplacementTest::replacesContentsAndLeavesNothingBeside()
{
    QVERIFY(replaceFile(path("a"), "new").ok());
    QCOMPARE(contentsOf("a"), QByteArray("new"));
    QCOMPARE(entries(), QStringList("a"));
}

void FileReplacementTest::keepsTheEarlierFileWithoutCommit()
{
    {
        FileReplacement file(path("a"));
        QVERIFY(file.open().ok());
        QCOMPARE(file.device().write("new"), 3);
    }
    QCOMPARE(contentsOf("a"), QByteArray("earlier"));
    QCOMPARE(entries(), QStringList("a"));
}

void FileReplacementTest::keepsTheEarlierFileOnAFullDisk_data()
{
    QTest::addColumn<int>("sizeBytes");
    QTest::newRow("less than a buffer") << 200;
    QTest::newRow("many buffers") << 1'000'000;
}

void FileReplacementTest::keepsTheEarlierFileOnAFullDisk()
{
    QFETCH(int, sizeBytes);
    const FullDisk disk(100);
    const Status written = replaceFile(path("a"), QByteArray(sizeBytes, 'x'));
    QVERIFY(!written.ok());
    QVERIFY2(written.failure().kind == Failure::Kind::noRoom,
             qPrintable(written.failure().sentence));
    QCOMPARE(contentsOf("a"), QByteArray("earlier"));
    QCOMPARE(entries(), QStringList("a"));
}

void FileReplacementTest::saysWhyAFileCannotBeWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Failure::Kind>("kind");
    QTest::newRow("no such folder") << "none/a" << Failure::Kind::notFound;
    QTest::newRow("a file for a folder") << "a/b" << Failure::Kind::notFound;
    QTest::newRow("a folder of this name") << "folder" << Failure::Kind::notAFile;
    QTest::newRow("a new file in a locked folder") << "locked/new" << Failure::Kind::noPermission;
}

void FileReplacementTest::saysWhyAFileCannotBeWritten()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkpath(path("folder")));
    QVERIFY(QDir().mkpath(path("locked")));
    QVERIFY(QFile::setPermissions(path("locked"), everyoneMayRead));
    const PlainUser user;
    const Status written = replaceFile(path(name), "new");
    QVERIFY(!written.ok());
    QTEST(written.failure().kind, "kind");
    QVERIFY2(written.failure().sentence.contains(path(name)),
             qPrintable(written.failure().sentence));
}

void FileReplacementTest::lockedFolderIsWrittenDirectlyOnlyIfAllowed_data()
{
    QTest::addColumn<InLockedFolder>("choice");
    QTest::addColumn<bool>("written");
    QTest::newRow("allowed") << InLockedFolder::writeDirectly << true;
    QTest::newRow("refused") << InLockedFolder::refuse << false;
}

void FileReplacementTest::lockedFolderIsWrittenDirectlyOnlyIfAllowed()
{
    QFETCH(InLockedFolder, choice);
    QFETCH(bool, written);
    QVERIFY(QFile::setPermissions(path("a"), QFile::Permissions(0x6666)));
    QVERIFY(QFile::setPermissions(m_folder->path(), everyoneMayRead));
    {
        const PlainUser user;
        QCOMPARE(replaceFile(path("a"), "new", choice).ok(), written);
    }
    QVERIFY(QFile::setPermissions(m_folder->path(), everyoneMayWrite));
    QCOMPARE(contentsOf("a"), QByteArray(written ? "new" : "earlier"));
}

void FileReplacementTest::commitAddsPermissions()
{
    FileReplacement file(path("program"));
    QVERIFY(file.open().ok());
    QVERIFY(file.commit(QFile::ExeOwner).ok());
    QVERIFY(QFile::permissions(path("program")) & QFile::ExeOwner);
}

void FileReplacementTest::followsASymbolicLink()
{
    QVERIFY(QFile::link(path("a"), path("link")));
    QVERIFY(replaceFile(path("link"), "new").ok());
    QVERIFY(QFileInfo(path("link")).isSymLink());
    QCOMPARE(contentsOf("a"), QByteArray("new"));
}

QTEST_GUILESS_MAIN(FileReplacementTest)
#include "FileReplacementTest.moc"
