#include "Platform/FileLock.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using corv::platform::FileLock;

class FileLockTest : public QObject
{
    Q_OBJECT

private slots:
    void secondTakerIsKeptOutUntilTheFirstEnds()
    {
        {
            FileLock first(path());
            QVERIFY(first.take(FileLock::Wait::no));
            FileLock second(path());
            QVERIFY(!second.take(FileLock::Wait::no));
        }
        QVERIFY(!QFile::exists(path()));
        FileLock third(path());
        QVERIFY(third.take(FileLock::Wait::no));
    }

    void killedProcessGivesItsLockBack()
    {
        int ready[2];
        QCOMPARE(::pipe(ready), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            FileLock lock(path());
            const char answer = lock.take(FileLock::Wait::no) ? 'y' : 'n';
            if (::write(ready[1], &answer, 1) == 1)
                ::pause();
            ::_exit(1);
        }
        char answer = 0;
        QCOMPARE(::read(ready[0], &answer, 1), ssize_t(1));
        QCOMPARE(answer, 'y');
        FileLock lock(path());
        QVERIFY(!lock.take(FileLock::Wait::no));
        ::kill(child, SIGKILL);
        // Waits for the lock, not for the process.
        QVERIFY(lock.take(FileLock::Wait::untilFree));
        ::waitpid(child, nullptr, 0);
        ::close(ready[0]);
        ::close(ready[1]);
    }

    void folderWithoutRoomForALockKeepsNobodyOut()
    {
        FileLock lock("/nonexistent/lock");
        QVERIFY(lock.take(FileLock::Wait::no));
    }

private:
    QString path() const { return m_folder.filePath("lock"); }
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(FileLockTest)
#include "FileLockTest.moc"
