#include "Platform/childProcess.h"

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

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcessTest.moc"
