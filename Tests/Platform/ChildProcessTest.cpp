#include "Platform/childProcess.h"
#include "Platform/fileSystem.h"

#include <QtTest>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace corv;

class ChildProcessTest : public QObject
{
    Q_OBJECT

private slots:
    void aChildOfALivingParentGoesOn();
    void aChildWhoseParentEndedBeforeEndsAtOnce();
    void aChildEndsWithItsParent();
    void aProcessIsGoneOnceItHasEnded();
};

namespace {

constexpr int reachedItsEnd = 7;

// How a child ends that binds itself to `parent` and then reaches its end.
int statusOfChildOf(qint64 parent)
{
    const pid_t child = fork();
    if (child == 0) {
        platform::endWithParent(parent);
        _exit(reachedItsEnd);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child ? status : -1;
}

} // namespace

void ChildProcessTest::aChildOfALivingParentGoesOn()
{
    const int status = statusOfChildOf(getpid());
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), reachedItsEnd);
}

void ChildProcessTest::aChildWhoseParentEndedBeforeEndsAtOnce()
{
    const int status = statusOfChildOf(getppid()); // not the one that it has
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGKILL);
}

void ChildProcessTest::aChildEndsWithItsParent()
{
    int life[2]; // has a writer as long as one of both lives
    QCOMPARE(pipe(life), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        const qint64 itself = getpid();
        if (fork() == 0) {
            platform::endWithParent(itself);
            const char isBound = 1;
            for (bool written = write(life[1], &isBound, 1) == 1; written;)
                pause();
        }
        pause();
    }
    close(life[1]);
    char byte = 0;
    QCOMPARE(read(life[0], &byte, 1), ssize_t(1));
    QCOMPARE(kill(parent, SIGKILL), 0);
    QCOMPARE(waitpid(parent, nullptr, 0), parent);
    QCOMPARE(read(life[0], &byte, 1), ssize_t(0)); // returns when the last of both is gone
    close(life[0]);
}

// Also while its parent has not asked how it ended.
void ChildProcessTest::aProcessIsGoneOnceItHasEnded()
{
    int gate[2];
    QCOMPARE(pipe(gate), 0);
    const pid_t child = fork();
    if (child == 0) {
        char byte = 0;
        _exit(read(gate[0], &byte, 1) == 1 ? 0 : 1);
    }
    QVERIFY(!platform::isProcessGone(child));
    QCOMPARE(write(gate[1], "x", 1), ssize_t(1));
    siginfo_t ended{};
    QCOMPARE(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    QVERIFY(platform::isProcessGone(child));
    QCOMPARE(waitpid(child, nullptr, 0), child);
    QVERIFY(platform::isProcessGone(child));
    close(gate[0]);
    close(gate[1]);
    QVERIFY(!platform::isProcessGone(getpid()));
    QVERIFY(!platform::isProcessGone(1)); // another user's, perhaps
    QVERIFY(!platform::isProcessGone(0));
    QVERIFY(!platform::isProcessGone(-1));
}

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcessTest.moc"
